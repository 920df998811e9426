#include "devhost/text/Parameters.h"

#include "devhost/text/Words.h"

namespace devhost {

std::string TextOf(const std::string& name, const Parameters& parameters) {
  std::string text = AsWord(name);
  for (const auto& [parameter, value] : parameters) {
    text += ' ' + AsWord(parameter) + '=' + AsWord(value);
  }
  return text;
}

}  // namespace devhost

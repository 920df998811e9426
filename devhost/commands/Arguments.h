#ifndef DEVHOST_COMMANDS_ARGUMENTS_H
#define DEVHOST_COMMANDS_ARGUMENTS_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "devhost/commands/Command.h"

namespace devhost {

// What a command line gave for the options and arguments of its command.
class Arguments {
 public:
  void Add(const CommandOption& option, std::vector<std::string> texts) { m_texts[option.name] = std::move(texts); }

  bool Has(const CommandOption& option) const { return m_texts.count(option.name) != 0; }
  // The values in the order in which they were given; none when the option was not.
  std::vector<std::string> Texts(const CommandOption& option) const {
    const auto found = m_texts.find(option.name);
    return found == m_texts.end() ? std::vector<std::string>() : found->second;
  }
  // The value of an option that has only one; "" when it was not given.
  std::string Text(const CommandOption& option) const {
    const std::vector<std::string> texts = Texts(option);
    return texts.empty() ? "" : texts.front();
  }

 private:
  std::map<std::string, std::vector<std::string>> m_texts;
};

}  // namespace devhost

#endif

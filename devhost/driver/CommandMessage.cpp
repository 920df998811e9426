#include "devhost/driver/CommandMessage.h"

#include "devhost/text/TypedText.h"

namespace devhost {

std::string CommandMessage::GetString(const char* name) const {
  const std::string* const value = Find(name);
  return value != nullptr ? *value : std::string();
}

unsigned long CommandMessage::GetULong(const char* name) const {
  const std::string* const value = Find(name);
  return value != nullptr ? ReadULong(*value) : 0;
}

bool CommandMessage::Has(const char* name) const {
  return Find(name) != nullptr;
}

const std::string* CommandMessage::Find(const char* name) const {
  if (name == nullptr) {
    return nullptr;
  }
  for (const auto& parameter : m_parameters) {
    if (parameter.first == name) {
      return &parameter.second;
    }
  }
  return nullptr;
}

}  // namespace devhost

#include "devhost/script/DeviceReplies.h"

#include <stdexcept>

#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

// An element without a name when the driver answered nothing or no XML.
XmlElement Parsed(const std::string& reply) {
  try {
    return ReadXml(reply);
  } catch (const XmlError&) {
    return XmlElement();
  }
}

std::string Attribute(const XmlElement& element, const char* name) {
  const std::string* const value = element.FindAttribute(name);
  return value == nullptr ? std::string() : *value;
}

}  // namespace

void CheckReply(const std::string& driver, const std::string& reply) {
  const XmlElement element = Parsed(reply);
  if (element.name == "Fail") {
    throw std::runtime_error(driver + " refused: " + (element.text.empty() ? "no reason given" : element.text));
  }
}

std::string SettingIn(const std::string& driver, const std::string& reply, const std::string& name) {
  std::string names;
  for (const XmlElement& child : Parsed(reply).children) {
    if (child.name == "setting" && Attribute(child, "name") == name) {
      return Attribute(child, "value");
    }
    names += child.name == "setting" ? (names.empty() ? "" : ", ") + Attribute(child, "name") : "";
  }
  throw std::runtime_error(driver + " has no such setting; it has: " + (names.empty() ? "none" : names));
}

std::string FilePathIn(const std::string& driver, const std::string& reply) {
  const XmlElement element = Parsed(reply);
  if (element.name != "filePath" || element.text.empty()) {
    throw std::runtime_error(driver + " names no file");
  }
  return element.text;
}

std::string AddressIn(const std::string& reply) {
  const XmlElement element = Parsed(reply);
  return element.name == "daemon" ? Attribute(element, "address") : std::string();
}

}  // namespace devhost

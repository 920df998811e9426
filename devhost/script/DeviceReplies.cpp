#include "devhost/script/DeviceReplies.h"

#include <cstdlib>
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

bool IsTrue(const XmlElement& element, const char* name) {
  return Attribute(element, name) == "true";
}

// 0 for what is not a number.
unsigned long Number(const XmlElement& element, const char* name) {
  return std::strtoul(Attribute(element, name).c_str(), nullptr, 10);
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
  for (const DeviceSetting& setting : SettingsIn(reply).settings) {
    if (setting.name == name) {
      return setting.value;
    }
    names += (names.empty() ? "" : ", ") + setting.name;
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

DeviceSettings SettingsIn(const std::string& reply) {
  DeviceSettings settings;
  for (const XmlElement& child : Parsed(reply).children) {
    if (child.name == "setting") {
      settings.settings.push_back({Attribute(child, "name"), Attribute(child, "value"), IsTrue(child, "erased")});
    } else if (child.name == "trapTarget") {
      settings.trapTargets.push_back({Attribute(child, "target"), Attribute(child, "community"), Attribute(child, "port")});
    }
  }
  return settings;
}

std::vector<OperationCount> CountsIn(const std::string& reply) {
  std::vector<OperationCount> counts;
  for (const XmlElement& child : Parsed(reply).children) {
    counts.push_back({Attribute(child, "operation"), Number(child, "value")});
  }
  return counts;
}

DaemonState DaemonIn(const std::string& reply) {
  const XmlElement element = Parsed(reply);
  if (element.name != "daemon") {
    return {};
  }
  return {IsTrue(element, "running"), Number(element, "pid"), Attribute(element, "address"), IsTrue(element, "online"),
          IsTrue(element, "pending")};
}

}  // namespace devhost

#include "devhost/script/DeviceReplies.h"

#include "devhost/text/Words.h"
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

std::optional<std::string> FailureIn(const std::string& reply) {
  const XmlElement element = Parsed(reply);
  if (element.name != "Fail") {
    return std::nullopt;
  }
  return element.text.empty() ? "no reason given" : element.text;
}

std::vector<std::string> SettingLines(const std::string& reply) {
  std::vector<std::string> lines;
  for (const XmlElement& child : Parsed(reply).children) {
    if (child.name == "setting") {
      lines.push_back(Attribute(child, "name") + "=" + AsWord(Attribute(child, "value")) +
                      (Attribute(child, "erased") == "true" ? " erased" : ""));
    } else if (child.name == "trapTarget") {
      lines.push_back("trapTarget=" + AsWord(Attribute(child, "target")) +
                      " community=" + AsWord(Attribute(child, "community")) + " port=" + AsWord(Attribute(child, "port")));
    }
  }
  return lines;
}

std::optional<std::string> SettingIn(const std::string& reply, const std::string& name) {
  for (const XmlElement& child : Parsed(reply).children) {
    if (child.name == "setting" && Attribute(child, "name") == name) {
      return Attribute(child, "value");
    }
  }
  return std::nullopt;
}

std::string SettingNames(const std::string& reply) {
  std::string names;
  for (const XmlElement& child : Parsed(reply).children) {
    if (child.name == "setting") {
      names += (names.empty() ? "" : ", ") + Attribute(child, "name");
    }
  }
  return names.empty() ? "none" : names;
}

std::string CountLine(const std::string& reply) {
  std::string line;
  for (const XmlElement& child : Parsed(reply).children) {
    line += (line.empty() ? "" : " ") + Attribute(child, "operation") + "=" + Attribute(child, "value");
  }
  return line;
}

DaemonReply DaemonIn(const std::string& reply) {
  const XmlElement element = Parsed(reply);
  if (element.name != "daemon") {
    return DaemonReply();
  }
  return {Attribute(element, "running"), Attribute(element, "pid"), Attribute(element, "address"),
          Attribute(element, "online"), Attribute(element, "pending")};
}

std::string DaemonLine(const DaemonReply& daemon) {
  const bool running = daemon.running == "true";
  return (running ? "running pid=" + AsWord(daemon.pid) : std::string("stopped")) + " address=" + AsWord(daemon.address) +
         (daemon.online == "true" ? " online" : " offline") + (daemon.pending == "true" ? " pending" : "");
}

std::string FilePathIn(const std::string& reply) {
  const XmlElement element = Parsed(reply);
  return element.name == "filePath" ? element.text : std::string();
}

}  // namespace devhost

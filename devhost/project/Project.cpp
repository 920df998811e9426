#include "devhost/project/Project.h"

#include <algorithm>
#include <boost/algorithm/string.hpp>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr char kAgentModule[] = "snmp_configuration_agent.so";
constexpr char kPlaceholder[] = "{project}";

// The loader takes a path without a slash for a name to search for, so paths are made absolute.
std::string Absolute(const std::string& path) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path.empty() ? "." : path, error);
  if (error) {
    throw ProjectError("cannot tell where " + Quoted(path) + " is: the current directory is out of reach (" +
                       error.message() + "); allowed: absolute paths");
  }
  return absolute.lexically_normal().string();
}

// Replaces every `{project}` in what a driver gets to read.
void Expand(XmlElement& element, const std::string& folder) {
  boost::replace_all(element.text, kPlaceholder, folder);
  for (XmlAttribute& attribute : element.attributes) {
    boost::replace_all(attribute.value, kPlaceholder, folder);
  }
  for (XmlElement& child : element.children) {
    Expand(child, folder);
  }
}

// Names stand in scripts and messages, and a name of digits alone would read as an id.
bool IsName(const std::string& text) {
  constexpr char kDigits[] = "0123456789";
  constexpr char kAllowed[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
  return text.find_first_not_of(kAllowed) == std::string::npos && text.find_first_not_of(kDigits) != std::string::npos;
}

class ProjectFile {
 public:
  ProjectFile(const std::string& path, const std::string& moduleFolder, std::string placeholder)
      : m_path(path), m_moduleFolder(Absolute(moduleFolder)), m_placeholder(std::move(placeholder)) {}

  Project Read() {
    XmlElement root = Parse();
    m_folder = FolderOf(Absolute(m_path));
    if (root.name != "project") {
      Refuse(root, "the root element is <" + root.name + ">; allowed: <project>");
    }
    Allow(root, {});
    Project project;
    for (XmlElement& child : root.children) {
      if (child.name == "driver") {
        project.drivers.push_back(ReadDriver(child));
      } else if (child.name == "variable" || child.name == "userVariable") {
        project.variables.push_back(ReadVariable(child));
      } else {
        Refuse(child, "unknown element <" + child.name + "> in <project>; allowed: <driver>, <variable>, <userVariable>");
      }
    }
    if (project.drivers.empty()) {
      Refuse(root, "the project has no drivers; allowed: one <driver id=\"..\" name=\"..\" module=\"..\"/> or more");
    }
    return project;
  }

 private:
  [[noreturn]] void Refuse(const XmlElement& element, const std::string& problem) const {
    throw ProjectError(m_path + ":" + std::to_string(element.line) + ": " + problem);
  }

  XmlElement Parse() const {
    try {
      return ReadXml(ReadRegularFile(m_path));
    } catch (const FileError& error) {
      throw ProjectError(error.what());
    } catch (const XmlError& error) {
      throw ProjectError(m_path + ":" + std::to_string(error.Line()) + ":" + std::to_string(error.Column()) +
                         ": the project is not well-formed XML: " + OneLine(error.what()));
    }
  }

  // These attributes, and no text.
  void Allow(const XmlElement& element, const std::vector<std::string>& allowed) const {
    for (const XmlAttribute& attribute : element.attributes) {
      if (std::find(allowed.begin(), allowed.end(), attribute.name) == allowed.end()) {
        Refuse(element, "unknown attribute " + Quoted(attribute.name) + " of <" + element.name +
                            ">; allowed: " + (allowed.empty() ? "none" : boost::join(allowed, ", ")));
      }
    }
    if (!element.text.empty()) {
      // It may be a community that belongs into an element.
      Refuse(element, "<" + element.name + "> holds text; allowed: elements only");
    }
  }

  const std::string& Required(const XmlElement& element, const char* name, const std::string& example) const {
    const std::string* const value = element.FindAttribute(name);
    if (value == nullptr || value->empty()) {
      Refuse(element, "<" + element.name + "> has no " + name + "; write " + name + "=\"" + example + "\"");
    }
    return *value;
  }

  DriverEntry ReadDriver(XmlElement& element) {
    Allow(element, {"id", "name", "module"});
    DriverEntry driver;
    driver.id = ReadId(element);
    driver.name = ReadName(element);
    driver.module = ReadModule(element);
    driver.configXml = ReadConfig(element);
    driver.origin = m_path + ":" + std::to_string(element.line);
    return driver;
  }

  std::uint32_t ReadNumber(const XmlElement& element, const char* attribute, const std::string& example) const {
    const std::string& text = Required(element, attribute, example);
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) {
      Refuse(element,
             std::string("the ") + attribute + " is " + Quoted(text) + "; allowed: a whole number from 0 to 4294967295");
    }
    return number;
  }

  unsigned long ReadId(const XmlElement& element) {
    const std::uint32_t id = ReadNumber(element, "id", "12");
    const auto [first, added] = m_idLines.emplace(id, element.line);
    if (!added) {
      Refuse(element, "the id " + std::to_string(id) + " is taken by the driver in line " + std::to_string(first->second) +
                          "; allowed: each id once");
    }
    return id;
  }

  bool ReadBoolean(const XmlElement& element, const char* attribute) const {
    const std::string* const value = element.FindAttribute(attribute);
    if (value != nullptr && *value != "true" && *value != "false") {
      Refuse(element, std::string(attribute) + " is " + Quoted(*value) + "; allowed: true, false");
    }
    return value != nullptr && *value == "true";
  }

  VariableEntry ReadVariable(const XmlElement& element) {
    Allow(element, {"device", "id", "name", "hidden", "trapEnabled"});
    if (!element.children.empty()) {
      const XmlElement& child = element.children.front();
      Refuse(child, "unknown element <" + child.name + "> in <" + element.name + ">; allowed: none");
    }
    VariableEntry variable;
    variable.deviceId = ReadNumber(element, "device", "5");
    variable.variableId = ReadNumber(element, "id", "7");
    variable.name = Required(element, "name", "lamp");
    variable.user = element.name == "userVariable";
    variable.hidden = ReadBoolean(element, "hidden");
    variable.trapEnabled = ReadBoolean(element, "trapEnabled");
    const auto [first, added] = m_variableLines.emplace(std::pair(variable.deviceId, variable.variableId), element.line);
    if (!added) {
      Refuse(element, "device " + std::to_string(variable.deviceId) + " has the variable in line " +
                          std::to_string(first->second) + " under the id " + std::to_string(variable.variableId) +
                          "; allowed: each pair of device and id once, variables and user variables together");
    }
    return variable;
  }

  std::string ReadName(const XmlElement& element) {
    const std::string& name = Required(element, "name", "kitchen");
    if (!IsName(name)) {
      Refuse(element,
             "the name is " + Quoted(name) + "; allowed: letters, digits, \"-\", \"_\" and \".\", not digits alone");
    }
    const auto [first, added] = m_nameLines.emplace(name, element.line);
    if (!added) {
      Refuse(element, "the name " + Quoted(name) + " is taken by the driver in line " + std::to_string(first->second) +
                          "; allowed: each name once");
    }
    return name;
  }

  std::string ReadModule(const XmlElement& element) const {
    const std::string& module = Required(element, "module", kAgentModule);
    const bool bare = module.find('/') == std::string::npos;
    const std::string path = Absolute(PathIn(bare ? m_moduleFolder : m_folder, module));
    const std::string reason = WhyNoRegularFile(path);
    if (!reason.empty()) {
      Refuse(element, "cannot load the module " + Quoted(path) + ": " + reason +
                          "; allowed: " + "the file name of a module in " + Quoted(m_moduleFolder) +
                          " (see --module-dir), or a path with a slash, relative to the project file");
    }
    return path;
  }

  std::string ReadConfig(XmlElement& element) const {
    for (const XmlElement& child : element.children) {
      if (child.name != "config") {
        Refuse(child, "unknown element <" + child.name + "> in <driver>; allowed: <config>");
      }
      if (&child != &element.children.front()) {
        Refuse(child, "a second <config> in <driver>; allowed: one");
      }
    }
    if (element.children.empty()) {
      return "<config/>";
    }
    Expand(element.children.front(), m_placeholder.empty() ? m_folder : m_placeholder);
    return XmlText(element.children.front(), XmlStyle::Compact);
  }

  std::string m_path;
  std::string m_folder;
  std::string m_moduleFolder;
  std::string m_placeholder;  // what {project} stands for; "" for the folder of the file
  std::map<std::uint32_t, std::size_t> m_idLines;
  std::map<std::string, std::size_t> m_nameLines;
  std::map<std::pair<unsigned long, unsigned long>, std::size_t> m_variableLines;
};

}  // namespace

Project ReadProject(const std::string& path, const std::string& moduleFolder, const std::string& folder) {
  return ProjectFile(path, moduleFolder, folder).Read();
}

Project AgentAlone(const std::string& moduleFolder) {
  DriverEntry agent;
  agent.id = 1;
  agent.name = "agent";
  agent.module = PathIn(Absolute(moduleFolder), kAgentModule);
  agent.configXml = "<config/>";
  const std::string reason = WhyNoRegularFile(agent.module);
  if (!reason.empty()) {
    throw ProjectError("cannot load the agent module " + Quoted(agent.module) + ": " + reason +
                       "; name the folder of the modules with --module-dir, or a project with --project");
  }
  return Project{{agent}, {}};
}

}  // namespace devhost

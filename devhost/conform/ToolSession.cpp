#include "devhost/conform/ToolSession.h"

#include <algorithm>

#include "devhost/conform/Check.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr char kManaged[] = "snmpIsManagedDevice";

const std::string& Id() {
  static const std::string id = std::to_string(Bench::kDevice);
  return id;
}

XmlElement Leaf(const std::string& name, const std::string& text) {
  XmlElement element;
  element.name = name;
  element.text = text;
  return element;
}

// The texts of an element and of what is in it, in their order, one a line.
std::string Flat(const XmlElement& element) {
  std::string text = element.name + "=" + element.text + "\n";
  for (const XmlElement& child : element.children) {
    text += Flat(child);
  }
  return text;
}

// The first line in which two such texts differ, for a message. Communities are not shown, whoever gave them.
std::string DifferenceOf(const std::string& found, const std::string& wanted) {
  const auto ends = std::mismatch(found.begin(), found.end(), wanted.begin(), wanted.end());
  const auto lineAt = [](const std::string& text, std::size_t at) {
    const std::size_t begin = at == 0 ? 0 : text.rfind('\n', at - 1) + 1;
    return text.substr(begin, text.find('\n', at) - begin);
  };
  const auto at = static_cast<std::size_t>(ends.second - wanted.begin());
  const std::string is = lineAt(found, at);
  const std::string was = lineAt(wanted, at);
  const bool isSecret = (is + was).find("ommunity") != std::string::npos;
  return isSecret ? "another " + was.substr(0, was.find('=')) : Quoted(is) + " instead of " + Quoted(was);
}

const XmlElement* FindChild(const XmlElement& element, const std::string& name) {
  const auto found = std::find_if(element.children.begin(), element.children.end(),
                                  [&name](const XmlElement& child) { return child.name == name; });
  return found == element.children.end() ? nullptr : &*found;
}

XmlElement TargetsOf(const ToolSettings& settings) {
  XmlElement list = Leaf("snmpTrapTargets", "");
  for (const TrapTarget& target : settings.targets) {
    XmlElement element = Leaf("trapTarget", "");
    element.children = {Leaf("target", target.target), Leaf("community", target.community), Leaf("port", target.port)};
    list.children.push_back(element);
  }
  return list;
}

}  // namespace

ToolSettings RandomToolSettings(Trial& trial, std::size_t targets) {
  ToolSettings settings;
  for (const char* const name : {kManaged, "snmpEnabledSetting", "snmpUsePrimaryContactSetting",
                                 "snmpUseProjectOwnerAddressSetting", "snmpUseRoomDeviceSetting"}) {
    settings.switches.emplace_back(name, trial.random() % 2 == 0 ? "true" : "false");
  }
  // A file has only what is switched on and managed.
  settings.switches[0].second = settings.switches[1].second = "true";
  for (const char* const name : {"snmpCommunityReadSetting", "snmpCommunityWriteSetting", "snmpSysContactSetting",
                                 "snmpSysLocationSetting", "snmpSysNameSetting"}) {
    settings.texts.emplace_back(name, trial.RandomText());
  }
  for (; targets != 0; --targets) {
    settings.targets.emplace_back("192.0.2." + std::to_string(targets), trial.RandomText(), "162");
  }
  return settings;
}

bool IsFromProject(const ToolSettings& settings, const std::string& text) {
  return std::any_of(Settings().begin(), Settings().end(), [&](const Setting& setting) {
    const std::pair<std::string, std::string> isOn("snmp" + setting.ownSwitch, "true");
    return "snmp" + setting.name + "Setting" == text &&
           std::find(settings.switches.begin(), settings.switches.end(), isOn) != settings.switches.end();
  });
}

std::string ElementOf(const ToolSettings& settings) {
  XmlElement element = Leaf("managedDevice", "");
  for (const auto& [name, value] : settings.switches) {
    element.children.push_back(Leaf(name, value));
  }
  for (const auto& [name, value] : settings.texts) {
    element.children.push_back(Leaf(name, value));
  }
  element.children.push_back(TargetsOf(settings));
  element.children.push_back(Leaf("deviceId", Id()));
  return XmlText(element, XmlStyle::Compact);
}

ToolSession::ToolSession(Bench& bench) : m_bench(bench) {
  m_bench.LoadAgent();
  m_bench.Load();
  m_bench.Act([this] {
    // The agent writes its section into the file that is there, and a new device may have none.
    Device device = m_bench.GetDevice();
    const std::string problem = GiveAFile(device);
    if (!problem.empty()) {
      throw Blocked(problem + ": see file-round");
    }
  });
  if (m_bench.AskAgent("AddManagedDevice", {{"deviceId", Id()}}) == "<Fail/>") {
    throw Blocked("the agent does not know the device: see life-agent-first");
  }
}

void ToolSession::Ask(const std::string& command, const Parameters& parameters, const std::string& expected) {
  const std::string reply = m_bench.AskAgent(command, parameters);
  Expect(reply == expected,
         "the agent has answered " + command + " with " + Quoted(reply) + " instead of " + Quoted(expected));
}

void ToolSession::Manage(bool isManaged) {
  Ask(isManaged ? "AddManagedDevice" : "DeleteManagedDevice", {{"deviceId", Id()}}, "<deviceId>" + Id() + "</deviceId>");
  m_isManaged = isManaged;
  if (m_hasSettings) {
    m_settings.switches[0].second = isManaged ? "true" : "false";
  }
}

void ToolSession::Set(const ToolSettings& settings) {
  Ask("SetDeviceState", {{"xml", ElementOf(settings)}}, "<Success/>");
  m_settings = settings;
  m_hasSettings = true;
  m_isManaged = settings.switches[0].second == "true";
}

void ToolSession::ExpectList() {
  const XmlElement list = ReadXml(m_bench.AskAgent("GetDeviceList", {}));
  const auto device = std::find_if(list.children.begin(), list.children.end(), [](const XmlElement& element) {
    const XmlElement* const id = FindChild(element, "deviceId");
    return id != nullptr && id->text == Id();
  });
  if (device == list.children.end()) {
    throw Blocked(
        "the agent leaves the device out of its list: IsSNMPVersionValid returns false for what GetSNMPVersion "
        "returns; give the device a version in the profile that it can be managed with");
  }
  const auto expect = [&device](const std::string& name, const XmlElement& wanted) {
    const XmlElement* const found = FindChild(*device, name);
    const std::string text = found != nullptr ? Flat(*found) : "";
    const std::string where = wanted.children.empty() ? "" : "in " + name + " ";
    Expect(text == Flat(wanted), "the list of devices has " + where + DifferenceOf(text, Flat(wanted)), "GetDeviceList");
  };
  expect(kManaged, Leaf(kManaged, m_isManaged ? "true" : "false"));
  if (m_hasSettings) {
    for (const auto& values : {m_settings.switches, m_settings.texts}) {
      for (const auto& [name, value] : values) {
        if (!IsFromProject(m_settings, name)) {
          expect(name, Leaf(name, value));
        }
      }
    }
    expect("snmpTrapTargets", TargetsOf(m_settings));
  }
}

}  // namespace devhost

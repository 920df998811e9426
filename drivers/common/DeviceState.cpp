#include "drivers/common/DeviceState.h"

#include <cstddef>
#include <set>

#include "drivers/common/SettingNames.h"
#include "host/H7XML.h"
#include "host/INodeList.h"
#include "host/ToString.h"

namespace drivers {

namespace {

const char kVersion[] = "1";
const char kTrapTargets[] = "trapTargets";
const char kRestartDue[] = "restartDue";

int HexValue(char digit) {
  return digit >= '0' && digit <= '9' ? digit - '0' : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

// Which bytes of a text stay as they are.
enum class Keep { InAttribute, InElement };

std::string Escape(const std::string& text, Keep keep) {
  const char digits[] = "0123456789ABCDEF";
  std::string result;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    // Attributes lose their line feeds and tabs on the way.
    const bool isBlank = keep == Keep::InElement && (byte == '\n' || byte == '\t');
    if ((byte >= ' ' && byte < 0x7f && byte != '%') || isBlank) {
      result.push_back(character);
    } else {
      result.push_back('%');
      result.push_back(digits[byte / 16]);
      result.push_back(digits[byte % 16]);
    }
  }
  return result;
}

bool Unescape(const std::string& escaped, std::string& text) {
  text.clear();
  for (std::size_t at = 0; at < escaped.size(); ++at) {
    if (escaped[at] != '%') {
      text.push_back(escaped[at]);
      continue;
    }
    const int high = at + 1 < escaped.size() ? HexValue(escaped[at + 1]) : -1;
    const int low = at + 2 < escaped.size() ? HexValue(escaped[at + 2]) : -1;
    if (high < 0 || low < 0) {
      return false;
    }
    text.push_back(static_cast<char>(high * 16 + low));
    at += 2;
  }
  return true;
}

// A file keeps its lines, for people and programs that look at the state. The dashes keep the blanks at its ends.
const char kFence[] = "-\n";
const char kFenceBehind[] = "\n-";
const std::size_t kFenceSize = 2;

std::string Fence(const std::string& text) {
  return kFence + Escape(text, Keep::InElement) + kFenceBehind;
}

bool Unfence(const std::string& fenced, std::string& text) {
  return fenced.size() >= 2 * kFenceSize && fenced.compare(0, kFenceSize, kFence) == 0 &&
         fenced.compare(fenced.size() - kFenceSize, kFenceSize, kFenceBehind) == 0 &&
         Unescape(fenced.substr(kFenceSize, fenced.size() - 2 * kFenceSize), text);
}

std::string AttributeError(const std::string& element, const char* attribute) {
  return "the attribute " + std::string(attribute) + " of an element " + element + " is damaged";
}

std::string ReadSetting(const H7XML::INode& element, std::set<std::string>& seen, SnmpSettings& settings) {
  const std::string name = element.GetNamedString("name");
  const std::string erasedText = element.GetNamedString("erased");
  std::string value;
  bool erased = false;
  if (!Unescape(element.GetNamedString("value"), value)) {
    return AttributeError("setting", "value");
  }
  if (!erasedText.empty() && !ReadSwitch(erasedText, erased)) {
    return AttributeError("setting", "erased");
  }
  if (!seen.insert(name).second) {
    return "the setting " + name + " stands twice";
  }
  if (erased) {
    return EraseSettingByName(settings, name);
  }
  // The targets themselves are elements of their own.
  return name == kTrapTargets ? std::string() : SetSettingByName(settings, name, value);
}

std::string ReadTrapTarget(const H7XML::INode& element, SnmpSettings& settings) {
  std::string target;
  std::string community;
  std::string port;
  if (!Unescape(element.GetNamedString("target"), target) || !Unescape(element.GetNamedString("community"), community) ||
      !Unescape(element.GetNamedString("port"), port)) {
    return "a trap target is damaged";
  }
  settings.trapTargets.Add(TrapTarget(target, community, port));
  return std::string();
}

std::string ReadText(const H7XML::INode& element, std::optional<std::string>& text) {
  const std::string name = element.GetName();
  if (text) {
    return "the element " + name + " stands twice";
  }
  return Unfence(element.GetValue(), text.emplace()) ? std::string() : "the text of the element " + name + " is damaged";
}

std::string FindMissingSetting(const std::set<std::string>& seen) {
  std::string wrong;
  VisitSettings(SnmpSettings(), [&](const NamedSetting& setting) {
    if (seen.count(setting.name) == 0) {
      wrong = "the setting " + std::string(setting.name) + " is missing";
    }
  });
  return wrong;
}

}  // namespace

h7::auto_com<H7XML::INode> WriteDeviceState(const std::string& kind, const DeviceState& state) {
  const h7::auto_com<H7XML::INode> root = H7XML::CreateXmlNode(kind, std::string());
  root->SetNamedString("version", kVersion);
  root->SetNamedString("online", h7::ToString(state.online));
  if (state.isRestartDue) {
    root->SetNamedString(kRestartDue, h7::ToString(true));
  }
  VisitSettings(state.settings, [&root](const NamedSetting& setting) {
    const h7::auto_com<H7XML::INode> element = H7XML::CreateXmlNode("setting", std::string());
    element->SetNamedString("name", setting.name);
    element->SetNamedString("value", Escape(setting.value, Keep::InAttribute));
    if (setting.erased != nullptr) {
      element->SetNamedString("erased", h7::ToString(*setting.erased));
    }
    root->AppendChild(*element);
  });
  for (const TrapTarget& target : state.settings.trapTargets.Get()) {
    const h7::auto_com<H7XML::INode> element = H7XML::CreateXmlNode("trapTarget", std::string());
    element->SetNamedString("target", Escape(target.target, Keep::InAttribute));
    element->SetNamedString("community", Escape(target.community, Keep::InAttribute));
    element->SetNamedString("port", Escape(target.port, Keep::InAttribute));
    root->AppendChild(*element);
  }
  if (state.known) {
    root->AddChildString("known", Fence(*state.known));
  }
  if (state.pending) {
    root->AddChildString("pending", Fence(state.pending->text));
    root->AddChildString("base", Fence(state.pending->base));
  }
  if (state.refused) {
    root->AppendChild(*state.refused);
  }
  return root;
}

std::string ReadDeviceState(const std::string& kind, const H7XML::INode& node, DeviceState& state) {
  if (node.GetName() != kind || node.GetNamedString("version") != kVersion) {
    return "it is an element " + node.GetName() + " of version \"" + node.GetNamedString("version") + "\", not " + kind +
           " of version " + kVersion;
  }
  std::string wrong = ReadSwitch(node.GetNamedString("online"), state.online) ? "" : AttributeError(kind, "online");
  const std::string restartDue = node.GetNamedString(kRestartDue);
  if (!restartDue.empty() && !ReadSwitch(restartDue, state.isRestartDue)) {
    wrong = AttributeError(kind, kRestartDue);
  }
  std::set<std::string> seen;
  std::optional<std::string> pending;
  std::optional<std::string> base;
  const h7::auto_com<H7XML::INodeList> children = node.GetChildren();
  for (auto child = children->First(); wrong.empty() && child; child = children->Next()) {
    const std::string name = child->GetName();
    if (name == "setting") {
      wrong = ReadSetting(*child, seen, state.settings);
    } else if (name == "trapTarget") {
      wrong = ReadTrapTarget(*child, state.settings);
    } else if (name == "known" || name == "pending" || name == "base") {
      wrong = ReadText(*child, name == "known" ? state.known : name == "pending" ? pending : base);
    } else if (name == "refused" && !state.refused) {
      state.refused = child;
    } else {
      wrong = "the element " + name + (name == "refused" ? " stands twice" : " is unknown");
    }
  }
  wrong = wrong.empty() ? FindMissingSetting(seen) : wrong;
  if (wrong.empty() && (pending.has_value() != base.has_value() || (pending && state.online))) {
    wrong = "a pending text stands without its base, or in a device that is on line";
  }
  if (wrong.empty() && pending) {
    state.pending = PendingText{*pending, *base};
  }
  return wrong;
}

}  // namespace drivers

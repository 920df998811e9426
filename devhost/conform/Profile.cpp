#include "devhost/conform/Profile.h"

#include <algorithm>
#include <string_view>

#include "devhost/conform/Check.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr std::string_view kFolder = "{folder}";

bool IsDay(const std::string& text) {
  static const std::string kForm = "0000-00-00";
  return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(),
                    [](char c, char form) { return form == '0' ? c >= '0' && c <= '9' : c == form; });
}

// Reads the elements of one file.
class ProfileReader {
 public:
  explicit ProfileReader(const std::string& file) : m_file(file) {}

  Profile Read(const XmlElement& root) {
    if (root.name != "conform") {
      Refuse(root, "the root is " + Quoted(root.name) + "; allowed: <conform>");
    }
    for (const XmlElement& child : root.children) {
      ReadChild(child);
    }
    return m_profile;
  }

 private:
  [[noreturn]] void Refuse(const XmlElement& place, const std::string& problem) const {
    throw ProfileError(m_file + ":" + std::to_string(place.line) + ": " + problem);
  }

  std::string Attribute(const XmlElement& element, const char* name) const {
    const std::string* const value = element.FindAttribute(name);
    if (value == nullptr || value->empty()) {
      Refuse(element, "<" + element.name + "> has no " + name + "; allowed: " + name + "=\"...\"");
    }
    return *value;
  }

  void ReadChild(const XmlElement& child) {
    if (child.name == "config") {
      m_profile.config = XmlText(child, XmlStyle::Compact);
    } else if (child.name == "claim") {
      ReadClaim(child);
    } else if (child.name == "waive") {
      const std::string check = Attribute(child, "check");
      if (FindCheck(check) == nullptr) {
        Refuse(child, "there is no check " + Quoted(check) + "; allowed: an id that devhost conform --list prints");
      }
      m_profile.waivers[check] = {Attribute(child, "reason"), ReadDay(child)};
    } else {
      Refuse(child, "<" + child.name + "> is unknown; allowed: <config>, <claim>, <waive>");
    }
  }

  std::string ReadDay(const XmlElement& child) const {
    const std::string* const day = child.FindAttribute("until");
    if (day != nullptr && !IsDay(*day)) {
      Refuse(child, "until is " + Quoted(*day) + "; allowed: a day such as 2027-06-30");
    }
    return day != nullptr ? *day : "";
  }

  void ReadClaim(const XmlElement& child) {
    const std::string claim = Attribute(child, "name");
    if (Claims().count(claim) == 0) {
      std::string allowed;
      for (const std::string& each : Claims()) {
        allowed += (allowed.empty() ? "" : ", ") + each;
      }
      Refuse(child, "the claim " + Quoted(claim) + " is unknown; allowed: " + allowed);
    }
    Profile::Commands& commands = m_profile.claims[claim];
    if (child.FindAttribute("out") != nullptr || child.FindAttribute("back") != nullptr) {
      commands = {Attribute(child, "out"), Attribute(child, "back")};
    }
  }

  const std::string m_file;
  Profile m_profile;
};

}  // namespace

std::string Profile::ConfigIn(const std::string& folder) const {
  std::string text = config;
  for (std::size_t at = text.find(kFolder); at != std::string::npos; at = text.find(kFolder, at + folder.size())) {
    text.replace(at, kFolder.size(), folder);
  }
  return text;
}

const std::set<std::string>& Claims() {
  static const std::set<std::string> claims = {"goes-off-line", "keeps-state", "local-file", "safe-actions", "withdraws"};
  return claims;
}

Profile ReadProfile(const NamedText& file) {
  try {
    return ProfileReader(file.name).Read(ReadXml(file.text));
  } catch (const XmlError& error) {
    throw ProfileError(file.name + ":" + std::to_string(error.Line()) + ": " + error.what());
  }
}

}  // namespace devhost

#include "devhost/replay/LineDifference.h"

#include <nlohmann/json.hpp>

#include "devhost/text/Difference.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Json = nlohmann::ordered_json;

// The parameters of a command or event, of which one may have a list of values.
Json Fields(const Json& parameters, Masker& secrets) {
  Json masked = Json::object();
  for (const auto& [name, value] : parameters.items()) {
    for (const Json& one : value.is_array() ? value : Json::array({value})) {
      const std::string shown = secrets.Fields({{name, one.get<std::string>()}}).front().second;
      masked[name].push_back(shown);
    }
  }
  return masked;
}

// The settings of a device and its trap targets.
void MaskSettings(Json& line, Masker& secrets) {
  for (Json& setting : line["settings"]) {
    setting["value"] = secrets.SettingValue(setting.value("name", ""), setting.value("value", ""));
  }
  for (Json& target : line["trapTargets"]) {
    target["community"] = secrets.Secret(target.value("community", ""));
  }
}

// XML on several lines, so that a difference is in a line of its own.
std::string LaidOut(const std::string& xml) {
  try {
    return XmlText(ReadXml(xml), XmlStyle::Indented);
  } catch (const XmlError&) {
    return xml;
  }
}

// The line with its secrets hidden.
Json Masked(Json line, Masker& secrets) {
  for (const char* const member : {"xml", "text", "parameters"}) {
    const auto found = line.find(member);
    if (found == line.end()) {
      continue;
    }
    if (found->is_object()) {
      *found = Fields(*found, secrets);
    } else if (found->is_string()) {
      const std::string text = found->get<std::string>();
      *found = member == std::string("xml") ? LaidOut(secrets.Xml(text))
               : line["kind"] == "file"     ? secrets.Config(text)
                                            : secrets.Text(text, WrittenBy::Others);
    }
  }
  if (line["kind"] == "settings") {
    MaskSettings(line, secrets);
  }
  return line;
}

std::string TextOf(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

// Whose line it is, for a title: "reply of agent".
std::string TitleOf(const Json& line) {
  const std::string driver = line.value("driver", "");
  return line.value("kind", "") + (driver.empty() ? "" : " of " + driver);
}

std::string Shown(const std::string& line, Masker& secrets) {
  if (line.empty()) {
    return "nothing more";
  }
  const Json json = Json::parse(line);
  const std::string xml = secrets.Xml(json.value("xml", ""));
  const std::string text = json["kind"] == "file" ? "" : secrets.Text(json.value("text", ""), WrittenBy::Others);
  return TitleOf(json) + (xml.empty() ? "" : " " + xml) + (text.empty() ? "" : ": " + OneLine(text));
}

bool IsSameSort(const Json& expected, const Json& found) {
  for (const char* const member : {"kind", "driver", "name"}) {
    if (expected.count(member) != 0 && (found.count(member) == 0 || expected[member] != found[member])) {
      return false;
    }
  }
  return true;
}

}  // namespace

LineDifference CompareLines(const std::string& expected, const std::string& found, Masker& secrets) {
  const Json wanted = expected.empty() ? Json::object() : Json::parse(expected);
  const Json seen = found.empty() ? Json::object() : Json::parse(found);
  const Json shownWanted = expected.empty() ? wanted : Masked(wanted, secrets);
  const Json shownSeen = found.empty() ? seen : Masked(seen, secrets);
  if (expected.empty() || found.empty() || !IsSameSort(wanted, seen)) {
    return {"something else came", {"  expected: " + Shown(expected, secrets), "  found:    " + Shown(found, secrets)}};
  }
  for (const auto& [member, value] : wanted.items()) {
    const auto other = seen.find(member);
    if (other != seen.end() && *other == value) {
      continue;
    }
    const std::string title = "the member \"" + member + "\" of the " + TitleOf(wanted);
    if (other == seen.end()) {
      return {title + " is missing", {}};
    }
    Masker plain(true);
    const std::string name = member;
    return {title + " differs", ExplainDifference(
                                    TextOf(Masked(wanted, plain)[name]), TextOf(Masked(seen, plain)[name]),
                                    [&](const std::string&) { return TextOf(shownWanted[name]); },
                                    [&](const std::string&) { return TextOf(shownSeen[name]); })};
  }
  return {};
}

}  // namespace devhost

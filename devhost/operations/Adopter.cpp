#include "devhost/operations/Adopter.h"

#include <algorithm>
#include <map>
#include <optional>

#include "devhost/check/Advice.h"
#include "devhost/check/ConfigText.h"
#include "devhost/check/ReadBack.h"
#include "devhost/check/Rules.h"
#include "devhost/operations/DeviceSettings.h"
#include "devhost/operations/FileTarget.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

// Whether XML carries the text, and the line that the agent makes of it is read as that text again.
bool ComesBack(const std::string& keyword, const std::string& value) {
  XmlElement element;
  element.name = "value";
  element.text = value;
  return ReadXml(XmlText(element, XmlStyle::Compact)).text == value && ReadLineBack(keyword + "  " + value).value == value;
}

// The first error that stops a change to these settings, or "".
std::string WhyRefused(const DeviceAnswers& answers) {
  for (const Finding& finding : Advise(SettingsElement(answers, kFileDeviceId), "settings", false)) {
    if (finding.severity == Severity::Error) {
      return finding.reason;
    }
  }
  return "";
}

}  // namespace

Adopter::Adopter(const std::vector<ReadLine>& lines) : m_lines(lines) {
  answers.isManaged = true;
  answers.isEnabled = true;
}

void Adopter::TakeText(const char* keyword, const char* setting, ErasableSetting<std::string>& value) {
  const Lines setters = Find(InLowerCase(keyword));
  if (setters.empty() || StaysWithIncluded(setters)) {
    return;
  }
  const ReadLine& last = *setters.back();
  const std::optional<Directive> rendered = ReadDirective(keyword + ("  " + last.setting.rest));
  if (!ComesBack(keyword, last.setting.rest) || !rendered || rendered->rest != last.setting.rest) {
    return Stay(setters, "the agent would not read the value back as it is");
  }
  value.value = last.setting.rest;
  if (const std::string reason = WhyRefused(answers); !reason.empty()) {
    value.value.clear();
    return Stay(setters, reason);
  }
  Become(last, setting);
  Go({setters.begin(), setters.end() - 1}, "no effect, since the last one wins: " + last.place);
}

void Adopter::TakeCommunities() {
  const Lines setters = Select([](const ReadLine& line) {
    return (line.setting.keyword == "rocommunity" || line.setting.keyword == "rwcommunity") && !line.community.empty();
  });
  for (const ReadLine* const line : setters) {
    if (line->isIncluded || m_gone.count(line->number) != 0) {
      continue;
    }
    const bool writes = line->setting.keyword == "rwcommunity";
    std::string& value = writes ? answers.communityWrite.value : answers.communityRead.value;
    const Lines same = Select([line](const ReadLine& other) { return other.community == line->community; });
    const std::string reason = WhyNotCommunity(*line, same);
    if (!reason.empty() || !value.empty()) {
      Stay({line}, reason.empty() ? "the section has room for one, and that is taken" : reason);
      continue;
    }
    value = line->setting.words.front().text;
    if (const std::string refusal = WhyRefused(answers); !refusal.empty()) {
      value.clear();
      Stay({line}, refusal);
      continue;
    }
    Become(*line, writes ? "snmpCommunityWriteSetting" : "snmpCommunityReadSetting");
    Go({same.begin() + 1, same.end()}, "no effect, since the first line of a community wins: " + line->place);
  }
}

void Adopter::TakeTraps() {
  const bool hasDefault = !Find("trapcommunity").empty();
  for (const ReadLine* const line : Find("trap2sink")) {
    const std::optional<Sink> sink = ReadSink(line->setting);
    if (line->isIncluded || !sink) {
      continue;
    }
    std::vector<std::string> words = sink->words;
    words.resize(3);
    const std::string plain =
        words[0] + (words[1].empty() ? "" : "  " + words[1]) + (words[2].empty() ? "" : "  " + words[2]);
    const std::optional<Directive> rendered = ReadDirective("trap2sink  " + plain);
    const bool isSame = rendered && !words[0].empty() && ReadSink(*rendered)->words == sink->words &&
                        line->setting.words.size() == sink->words.size() &&
                        plain.find_first_of("\"'\\") == std::string::npos &&
                        ComesBack("sysName", words[0] + words[1] + words[2]);
    if (!isSame || (hasDefault && words[1].empty())) {
      Stay({line}, isSame ? "its community is the one of trapcommunity" : "it is more than target, community and port");
      continue;
    }
    // Alone, since judging all of them for each one takes long where there are many.
    DeviceAnswers alone = answers;
    alone.trapTargets.value = {{words[0], words[1], words[2]}};
    if (const std::string refusal = WhyRefused(alone); !refusal.empty()) {
      Stay({line}, refusal);
      continue;
    }
    answers.trapTargets.value.push_back(alone.trapTargets.value.front());
    Become(*line, "snmpTrapTargets");
  }
}

bool Adopter::TakeSame(const std::string& keyword, const std::string& value) {
  const Lines setters = Find(keyword);
  if (setters.empty()) {
    return true;
  }
  if (keyword == "includealldisks") {
    return TakeDisks(setters, value);
  }
  const bool isSame = setters.back()->setting.rest == value && !setters.back()->isIncluded;
  if (isSame && std::none_of(setters.begin(), setters.end(), [](const ReadLine* one) { return one->isIncluded; })) {
    Go(setters, "the section says the same");
  }
  return false;
}

bool Adopter::TakeDisks(const Lines& setters, const std::string& value) {
  if (DiskPercent(setters.front()->setting.rest) == DiskPercent(value)) {
    Go(setters, "the section says the same");
    return false;
  }
  Stay(setters, "no effect any more, since the first one wins: that of the section, " + value);
  return true;
}

void Adopter::NameStaying() {
  std::map<std::string, std::string> others;
  for (const ReadLine& line : m_lines) {
    if (line.isIncluded || m_gone.count(line.number) != 0 || m_named.count(line.number) != 0) {
      continue;
    }
    // A misspelt one may be a secret.
    const bool isKnown = UsualDirectiveNames().daemon.count(line.setting.keyword) != 0;
    std::string& places = others[isKnown ? line.setting.keyword : "what the daemon does not know"];
    places += (places.empty() ? "" : ", ") + line.place;
  }
  for (const auto& [keyword, places] : others) {
    adoption.staying.push_back(keyword + ": " + places);
  }
}

Adopter::Lines Adopter::Select(const std::function<bool(const ReadLine&)>& wanted) const {
  Lines found;
  for (const ReadLine& line : m_lines) {
    if (wanted(line)) {
      found.push_back(&line);
    }
  }
  return found;
}

Adopter::Lines Adopter::Find(const std::string& keyword) const {
  return Select([&keyword](const ReadLine& line) { return line.setting.keyword == keyword && !IsRejected(line.setting); });
}

std::string Adopter::Title(const ReadLine& line) {
  return line.place + ": " + line.setting.keyword;
}

void Adopter::Become(const ReadLine& line, const std::string& setting) {
  adoption.becoming.push_back(Title(line) + " becomes " + setting);
  m_gone.insert(line.number);
}

void Adopter::Go(const Lines& lines, const std::string& reason) {
  for (const ReadLine* const line : lines) {
    if (!line->isIncluded && m_gone.insert(line->number).second) {
      adoption.going.push_back(Title(*line) + ": " + reason);
    }
  }
}

void Adopter::Stay(const Lines& lines, const std::string& reason) {
  for (const ReadLine* const line : lines) {
    if (!line->isIncluded && m_named.insert(line->number).second) {
      adoption.staying.push_back(Title(*line) + ": " + reason);
    }
  }
}

bool Adopter::StaysWithIncluded(const Lines& setters) {
  const auto included = std::find_if(setters.begin(), setters.end(), [](const ReadLine* line) { return line->isIncluded; });
  if (included == setters.end()) {
    return false;
  }
  adoption.staying.push_back(Title(**included) +
                             ": set in an included file, which wins over the section; leave the setting empty");
  Stay(setters, "also set in an included file");
  return true;
}

std::string Adopter::WhyNotCommunity(const ReadLine& line, const Lines& same) const {
  const std::string& keyword = line.setting.keyword;
  ConfigLine config;
  config.setting = line.setting;
  const Grant grant = ReadGrant(config);
  const bool isElsewhere = std::any_of(same.begin(), same.end(), [](const ReadLine* other) { return other->isIncluded; });
  const std::string& value = line.setting.words.front().text;
  const std::optional<Directive> rendered = ReadDirective(keyword + "  " + value);
  return !grant.source.empty() || !grant.limit.empty() ? "it is limited to an address or a part of the tree"
         : isElsewhere                                 ? "an included file has the same community"
         : same.front() != &line                       ? "an earlier line has the same community: " + same.front()->place
         : !ComesBack(keyword, value) || !rendered || GrantKey(*rendered) != line.community
             ? "the agent would not read the community back as it is"
             : "";
}

}  // namespace devhost

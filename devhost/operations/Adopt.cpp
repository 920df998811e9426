#include "devhost/operations/Adopt.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "devhost/check/Advice.h"
#include "devhost/check/ReadBack.h"
#include "devhost/check/Rules.h"
#include "devhost/engine/Host.h"
#include "devhost/operations/DeviceSettings.h"
#include "devhost/operations/FileTarget.h"
#include "devhost/operations/Overridden.h"
#include "devhost/operations/ReadLines.h"
#include "devhost/preview/DeviceAnswers.h"
#include "devhost/preview/ScratchDevice.h"
#include "devhost/system/MemoryFile.h"
#include "devhost/system/RunProgram.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Lines = std::vector<const ReadLine*>;

struct NoObserver : HostObserver {
  void OnOccurrence(const Occurrence&) override {}
};

// The file that the agent would make of `text` with these settings.
std::string Managed(const std::string& settings, const std::string& text, const DriverEntry& agent) {
  DeviceAnswers content;
  content.file = text;
  content.isVersionValid = true;
  NoObserver nobody;
  Host host(nobody);
  DriverEntry writer = agent;
  writer.id = kFileDeviceId + 1;
  host.Load(writer);
  const DriverEntry scratch = {kFileDeviceId, "scratch", agent.module, "<config/>"};
  host.Load(scratch, [&content](IInstanceManager& instances) { return new ScratchDevice(instances, content); });
  host.Command(writer.id, "SetDeviceState", {{"xml", settings}});
  return content.file;
}

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

// Makes settings of lines, one subject after the other. What a change to the settings would be refused for stays a line.
class Adopter {
 public:
  explicit Adopter(const std::vector<ReadLine>& lines) : m_lines(lines) {
    answers.isManaged = true;
    answers.isEnabled = true;
  }

  // A contact, location or name: the last line wins.
  void TakeText(const char* keyword, const char* setting, ErasableSetting<std::string>& value) {
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

  // Communities for everybody and everything, one that reads and one that writes: the first line of a community wins.
  void TakeCommunities() {
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

  void TakeTraps() {
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

  // Lines that the section has anyway. `value` is that of the section.
  void TakeSame(const std::string& keyword, const std::string& value) {
    const Lines setters = Find(keyword);
    const bool isSame = !setters.empty() && setters.back()->setting.rest == value && !setters.back()->isIncluded;
    if (isSame && std::none_of(setters.begin(), setters.end(), [](const ReadLine* one) { return one->isIncluded; })) {
      Go(setters, "the section says the same");
    }
  }

  bool Has(const std::string& keyword) const { return !Find(keyword).empty(); }

  // Names what stays: lines with a reason of their own, then the others by their directives.
  void NameStaying() {
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

  bool IsGone(std::size_t number) const { return m_gone.count(number) != 0; }

  DeviceAnswers answers;
  Adoption adoption;

 private:
  Lines Select(const std::function<bool(const ReadLine&)>& wanted) const {
    Lines found;
    for (const ReadLine& line : m_lines) {
      if (wanted(line)) {
        found.push_back(&line);
      }
    }
    return found;
  }

  // The lines with that keyword, in lower case, which the daemon takes.
  Lines Find(const std::string& keyword) const {
    return Select([&keyword](const ReadLine& line) { return line.setting.keyword == keyword && !IsRejected(line.setting); });
  }

  static std::string Title(const ReadLine& line) { return line.place + ": " + line.setting.keyword; }

  void Become(const ReadLine& line, const std::string& setting) {
    adoption.becoming.push_back(Title(line) + " becomes " + setting);
    m_gone.insert(line.number);
  }
  void Go(const Lines& lines, const std::string& reason) {
    for (const ReadLine* const line : lines) {
      if (!line->isIncluded && m_gone.insert(line->number).second) {
        adoption.going.push_back(Title(*line) + ": " + reason);
      }
    }
  }
  void Stay(const Lines& lines, const std::string& reason) {
    for (const ReadLine* const line : lines) {
      if (!line->isIncluded && m_named.insert(line->number).second) {
        adoption.staying.push_back(Title(*line) + ": " + reason);
      }
    }
  }

  // An included file is read below the section, so its line would win over what becomes a setting.
  bool StaysWithIncluded(const Lines& setters) {
    const auto included =
        std::find_if(setters.begin(), setters.end(), [](const ReadLine* line) { return line->isIncluded; });
    if (included == setters.end()) {
      return false;
    }
    adoption.staying.push_back(Title(**included) +
                               ": set in an included file, which wins over the section; leave the setting empty");
    Stay(setters, "also set in an included file");
    return true;
  }

  std::string WhyNotCommunity(const ReadLine& line, const Lines& same) const {
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

  const std::vector<ReadLine>& m_lines;
  std::set<std::size_t> m_gone;
  std::set<std::size_t> m_named;
};

// What the section has of the lines that it always has: keyword in lower case, and value.
std::vector<std::pair<std::string, std::string>> FixedLines(const std::string& managed) {
  std::vector<std::pair<std::string, std::string>> fixed;
  ForEachLine(managed, [&fixed](const ConfigLine& line) {
    const bool isSetting =
        line.setting && (IsSystemText(line.setting->keyword) || IsCommunityKeyword(line.setting->keyword) ||
                         line.setting->keyword == "trap2sink");
    if (line.IsInside() && line.setting && !isSetting) {
      fixed.emplace_back(line.setting->keyword, line.setting->rest);
    }
  });
  return fixed;
}

// The raw difference, for the program patch. It is never shown.
std::string PatchOf(const std::string& name, const std::string& before, const std::string& after) {
  const MemoryFile old(before);
  const MemoryFile young(after);
  ProgramRun run;
  run.words = {"diff", "--text", "--unified", "--label", name, "--label", name, old.Path(), young.Path()};
  run.longestOutput = 2 * (before.size() + after.size()) + 65536;
  const ProgramResult result = RunProgram(run);
  if (result.exitStatus > 1 || result.signal != 0) {
    throw ProgramError("the program diff has failed (status " + std::to_string(result.exitStatus) + ")");
  }
  return result.output;
}

std::string WithoutGone(const std::string& text, const Adopter& adopter) {
  std::string rest;
  std::size_t number = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
    rest += adopter.IsGone(++number) ? "" : text.substr(at, end - at);
    at = end;
  }
  return rest;
}

}  // namespace

Adoption Adopt(const NamedText& file, const std::string& path, const DriverEntry& agent) {
  const Layout layout = LayOut(file.text);
  if (layout.isUtf16) {
    throw AdoptError(file.name + ": the file is in UTF-16; allowed: a text that the daemon reads");
  }
  if (layout.firstStart != 0 || layout.firstEnd != 0) {
    throw AdoptError(file.name +
                     ": the file has markers of the agent's section; allowed: one without, or \"devhost check\"");
  }
  const std::vector<ReadLine> lines = ReadLinesOf(file.text, path);
  Adopter adopter(lines);
  DeviceAnswers& answers = adopter.answers;
  adopter.TakeCommunities();
  adopter.TakeText("sysContact", "snmpSysContactSetting", answers.sysContact);
  adopter.TakeText("sysLocation", "snmpSysLocationSetting", answers.sysLocation);
  adopter.TakeText("sysName", "snmpSysNameSetting", answers.sysName);
  adopter.TakeTraps();
  Adoption& adoption = adopter.adoption;
  adoption.settings = SettingsElement(answers, kFileDeviceId);
  for (const auto& [keyword, value] : FixedLines(Managed(adoption.settings, "", agent))) {
    if (!adopter.Has(keyword)) {
      adoption.coming.push_back(keyword + " " + value);
    }
    adopter.TakeSame(keyword, value);
  }
  adopter.NameStaying();
  adoption.text = WithoutGone(file.text, adopter);
  adoption.patch = PatchOf(file.name, file.text, adoption.text);
  adoption.winning = OverridingLines(Managed(adoption.settings, adoption.text, agent), file.name + ", managed", false);
  return std::move(adoption);
}

}  // namespace devhost

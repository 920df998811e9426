#include "devhost/operations/Adopt.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "devhost/check/ConfigText.h"
#include "devhost/check/Rules.h"
#include "devhost/engine/Host.h"
#include "devhost/operations/Adopter.h"
#include "devhost/operations/DeviceSettings.h"
#include "devhost/operations/FileTarget.h"
#include "devhost/operations/Overridden.h"
#include "devhost/preview/DeviceAnswers.h"
#include "devhost/preview/ScratchDevice.h"
#include "devhost/system/MemoryFile.h"
#include "devhost/system/RunProgram.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

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

// Where the lines for other programs are, which the agent leaves alone; "" when there is none.
std::string PlacesOfOthers(const std::string& text) {
  std::string places;
  ForEachLine(text, [&places](const ConfigLine& line) {
    if (line.elsewhere) {
      places += (places.empty() ? "line " : ", line ") + std::to_string(line.number);
    }
  });
  return places;
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
    if (adopter.TakeSame(keyword, value)) {
      adoption.coming.push_back(keyword + " " + value);
    }
  }
  adopter.NameStaying();
  if (const std::string places = PlacesOfOthers(file.text); !places.empty()) {
    adoption.staying.push_back("for other programs than the daemon: " + places);
  }
  adoption.text = WithoutGone(file.text, adopter);
  adoption.patch = PatchOf(file.name, file.text, adoption.text);
  adoption.winning = OverridingLines(Managed(adoption.settings, adoption.text, agent), path, file.name + ", managed", false);
  return std::move(adoption);
}

}  // namespace devhost

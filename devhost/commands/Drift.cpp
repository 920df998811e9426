#include "devhost/operations/Drift.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/commands/Findings.h"
#include "devhost/commands/ProbeOutput.h"
#include "devhost/json/ChangeObject.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using nlohmann::ordered_json;

const CommandOption kDriftJson{
    "--json", "", "Print one JSON object: device, verdict, section, overridden, snapshot, difference, settings, messages"};

constexpr char kFooter[] =
    "Three things are compared: the file with what the agent would write for the settings of the\n"
    "device; what the daemon would serve with what the section of the agent says; and all of that\n"
    "with what the last change (\"devhost apply\", \"devhost undo\") has left. The device is only\n"
    "asked. A new time stamp in the section is not drift. With --probe, what the daemon serves\n"
    "otherwise than configured is drift, too; no test traps are sent.\n"
    "\n"
    "Exit status: 0 no drift; 1 there is some; 2 wrong usage, or the device cannot be reached or\n"
    "does not answer, or with --probe its daemon.\n"
    "\n"
    "Example: has somebody changed the kitchen by hand?\n"
    "\n"
    "  devhost drift --project project.xml kitchen";

// Asks the daemon and takes its answer into the verdict of the drift.
ProbeReport AskDaemon(const Target& target, const std::string& address, DeviceLife& life, Drift& drift) {
  ProbeMeans means;
  means.address = address;
  means.sendsTraps = false;
  ProbeReport report = ProbeDevice(target, means, LookAtDevice(target, life));
  if (report.verdict == ProbeReport::Verdict::Differs) {
    drift.verdict = Drift::Verdict::Some;
  } else if (report.verdict == ProbeReport::Verdict::Unknown && drift.verdict == Drift::Verdict::None) {
    drift.verdict = Drift::Verdict::Unknown;
    drift.messages.push_back(report.messages.back());
  }
  return report;
}

// `probe` may be null. `stage` is told of a drift that nobody knows.
void PrintJson(const Drift& drift, const ProbeReport* probe, const std::string& device, Stage stage, Output& out) {
  ordered_json object = DriftObject(drift, device);
  if (probe != nullptr) {
    object["probe"] = ProbeObject(*probe);
  }
  if (drift.verdict == Drift::Verdict::Unknown) {
    object["stage"] = NameOf(stage);
    object["reason"] = Joined(drift.messages);
  }
  PrintObject(object, out);
}

void PrintText(const Drift& drift, const std::string& device, Console& console) {
  for (const std::string& message : drift.messages) {
    console.Complain(message);
  }
  if (!drift.section.empty() && drift.hasSection) {  // else it would be all of the section
    console.Out().Write("the file is not what the agent would write for the settings of " + device + ":\n" + drift.section);
  }
  for (const Finding& finding : drift.overridden) {
    console.Out().Write(FindingText(finding));
  }
  if (!drift.since.IsNone()) {
    console.Out().Write("changed since snapshot " + std::to_string(drift.snapshot) + ":\n" + drift.since.file +
                        SettingLines(drift.since.settings));
  }
  if (drift.verdict == Drift::Verdict::None) {
    const std::string compared =
        drift.snapshot == 0 ? "" : " since the change of snapshot " + std::to_string(drift.snapshot);
    console.Out().Write("no drift on " + device + compared + "\n");
  }
}

ExitStatus ShowDrift(const Arguments& arguments, Console& console) {
  const PrintStop printStop = [&](Stage stage, const std::string& reason) {
    Drift unknown;
    unknown.messages = {reason};
    PrintJson(unknown, nullptr, TargetName(arguments), stage, console.Out());
  };
  return GuardStops(arguments, console, printStop, [&](Stage& stage) {
    RequireOneTarget(arguments);
    const Target target = ReadTarget(arguments);
    stage = Stage::Plan;
    DeviceLife life(target.chosen.agent, target.chosen.device);
    Drift drift = FindDrift(target, life);
    std::optional<ProbeReport> probe;
    if (arguments.Has(kAskDaemon) && drift.verdict != Drift::Verdict::Unknown) {
      probe = AskDaemon(target, arguments.Text(kAddress), life, drift);
    }
    const std::string device = OneLine(target.chosen.device.name);
    if (arguments.Has(kDriftJson)) {
      PrintJson(drift, probe ? &*probe : nullptr, target.chosen.device.name, stage, console.Out());
    } else {
      PrintText(drift, device, console);
      console.Out().Write(probe ? ShortProbeText(*probe, device) : "");
    }
    return drift.verdict == Drift::Verdict::None   ? ExitStatus::Good
           : drift.verdict == Drift::Verdict::Some ? ExitStatus::Failed
                                                   : ExitStatus::Wrong;
  });
}

}  // namespace

Command MakeDrift() {
  return {"drift",
          "Say how a device has moved away from its settings",
          {kDeviceUnlessFile, kProjectUnlessFile, kModuleFolder, kDeviceState, kFile, kSnapshots, kAskDaemon, kAddress,
           kDriftJson, kShowSecrets},
          kFooter,
          &ShowDrift};
}

}  // namespace devhost

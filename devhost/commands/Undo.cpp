#include <algorithm>
#include <string>
#include <vector>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/operations/History.h"

namespace devhost {

namespace {

const CommandOption kNumber{"snapshot", "", "Number of the snapshot; the youngest when it is missing",
                            CommandOption::Takes::Text};

constexpr char kFooter[] =
    "The device gets the settings that it had before the snapshot: through the agent, with the\n"
    "same judgement, questions and guards as \"devhost apply\", and with a snapshot of its own, so\n"
    "an undo can be undone. What the agent does not put back is printed: text above the section,\n"
    "a file without a section, and foreign lines that were changed since.\n"
    "\n"
    "Exit status: 0 the device has the settings, or gets them when it is back; 1 the change has\n"
    "failed, or, with --dry-run, something would change; 2 nothing was changed.\n"
    "\n"
    "Example: take the last change of the kitchen back.\n"
    "\n"
    "  devhost undo --project project.xml kitchen";

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

std::vector<std::string> WhatStays(const Snapshot& snapshot, const Plan& plan, bool showSecrets) {
  const std::string difference = plan.after.settings.empty() ? "" : NotPutBack(snapshot, plan, showSecrets);
  std::vector<std::string> lines = LinesOf(difference);
  if (!lines.empty()) {
    lines.insert(lines.begin(), "the agent does not put this back:");
  }
  return lines;
}

ExitStatus Undo(const Arguments& arguments, Console& console) {
  return GuardStops(arguments, console, PrintStopOfChange(TargetName(arguments), console), [&](Stage& stage) {
    RequireAnswer(arguments, console);
    const Target target = ReadTarget(arguments);
    const std::string text = NextText(arguments, kNumber);
    const unsigned long number = text.empty() ? 0 : SnapshotNumber(kNumber.name, text);
    const SnapshotList snapshots = ReadSnapshots(target.snapshotFolder, target.chosen.device.id);
    const Snapshot& snapshot = FindSnapshotToUndo(snapshots, number);
    Change change = UndoOf(snapshot, target);
    change.accepted = AcceptedRules(arguments);
    change.restartCommand = RestartWords(arguments);
    const auto remarks = [&](const Plan& plan) { return WhatStays(snapshot, plan, target.showSecrets); };
    return MakeChange(change, remarks, arguments, console, stage);
  });
}

}  // namespace

Command MakeUndo() {
  return {"undo",
          "Put the settings of a device back as they were before a change",
          {kDeviceUnlessFile, kNumber, kProjectUnlessFile, kModuleFolder, kDeviceState, kFile, kSnapshots, kAccept, kDryRun,
           kDiff, kYes, kNoProbe, kRestart, kChangeJson, kShowSecrets},
          kFooter,
          &Undo};
}

}  // namespace devhost

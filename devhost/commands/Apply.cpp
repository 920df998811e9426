#include "devhost/operations/Apply.h"

#include <string>
#include <vector>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"

namespace devhost {

namespace {

constexpr char kFooter[] =
    "The settings are judged by the rules of \"devhost advise\", and the change is previewed: an\n"
    "error stops it, a warning does not. --accept RULE,RULE names errors that do not. Then the\n"
    "file and settings of the device are kept as a snapshot, and the agent of the project does\n"
    "SetDeviceState with the device's own driver. A device that is as the settings say is not\n"
    "written. Without --state, only its file counts for that.\n"
    "\n"
    "On a terminal, the difference is shown and a question asked. Elsewhere --yes is needed.\n"
    "\n"
    "Exit status: 0 the device is as the settings say, or gets them when it is back; 1 the change\n"
    "has failed, or, with --dry-run, something would change; 2 nothing was changed: wrong usage,\n"
    "a project, device, file or folder that is wrong, an error that is not accepted, the agent\n"
    "would refuse, or nobody said yes.\n"
    "\n"
    "Example: give these settings to the kitchen.\n"
    "\n"
    "  devhost apply --project project.xml kitchen kitchen.xml --yes";

ExitStatus Apply(const Arguments& arguments, Console& console) {
  return GuardStops(arguments, console, PrintStopOfChange(arguments, kDevice, console), [&](Stage& stage) {
    RequireAnswer(arguments, console);
    Change change;
    change.target = ReadTarget(arguments);
    change.settings = ReadNamedText(arguments.Text(kSettings));
    change.accepted = AcceptedRules(arguments);
    return MakeChange(
        change, [](const Plan&) { return std::vector<std::string>(); }, arguments, console, stage);
  });
}

}  // namespace

Command MakeApply() {
  return {"apply",
          "Give settings to a device through the agent, and keep what was there",
          {kDevice, kSettings, kDeviceProject, kModuleFolder, kDeviceState, kSnapshots, kAccept, kDryRun, kDiff, kYes,
           kChangeJson, kShowSecrets},
          kFooter,
          &Apply};
}

}  // namespace devhost

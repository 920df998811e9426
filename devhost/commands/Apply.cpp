#include "devhost/operations/Apply.h"

#include <algorithm>
#include <exception>
#include <new>
#include <string_view>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/engine/EndWatch.h"

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

std::set<std::string> SplitRules(std::string_view text) {
  std::set<std::string> rules;
  while (!text.empty()) {
    const std::string_view rule = text.substr(0, text.find(','));
    rules.emplace(rule);
    text.remove_prefix(std::min(rule.size() + 1, text.size()));
  }
  return rules;
}

ExitStatus Apply(const Arguments& arguments, Console& console) {
  EndWatch::SetExitStatus(static_cast<int>(ExitStatus::Wrong));
  try {
    if (!MayGoOn(arguments, console)) {
      return ExitStatus::Wrong;
    }
    Change change;
    change.target = ReadTarget(arguments);
    change.settings = ReadNamedText(arguments.Text(kSettings));
    change.accepted = SplitRules(arguments.Text(kAccept));
    const ExitStatus status = MakeChange(change, {}, arguments, console);
    return console.Out().Error() == 0 ? status : std::max(status, ExitStatus::Failed);
  } catch (const std::bad_alloc&) {
    console.Complain("out of memory");
  } catch (const std::exception& error) {
    console.Complain(error.what());
  }
  return ExitStatus::Wrong;
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

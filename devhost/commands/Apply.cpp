#include "devhost/operations/Apply.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/text/TypedText.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr char kFooter[] =
    "The settings are judged by the rules of \"devhost advise\", and the change is previewed: an\n"
    "error stops it, a warning does not. --accept RULE,RULE names errors that do not. Then the\n"
    "file and settings of the device are kept as a snapshot, and the agent of the project does\n"
    "SetDeviceState with the device's own driver. A device that is as the settings say is not\n"
    "written. Without --state, only its file counts for that.\n"
    "\n"
    "With --file, one snmpd.conf of this machine takes the place of the device, and the settings\n"
    "name device 1. --restart-command runs a program without a shell when the file was changed.\n"
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
    "  devhost apply --project project.xml kitchen kitchen.xml --yes\n"
    "\n"
    "Example: give settings to the daemon of this machine, without a project.\n"
    "\n"
    "  devhost apply --file /etc/snmp/snmpd.conf settings.xml \\\n"
    "    --restart-command 'systemctl restart snmpd'";

const CommandOption kSettingsOfTarget{"settings", "", "File of a device settings element, - for standard input",
                                      CommandOption::Takes::Path};

NamedText ReadSettings(const Arguments& arguments) {
  const std::string name = NextText(arguments, kSettingsOfTarget);
  if (name.empty()) {
    throw std::runtime_error("the settings are missing; allowed: DEVICE SETTINGS --project FILE, or SETTINGS --file FILE");
  }
  return ReadNamedText(name);
}

// A daemon that serves a file is on. The agent writes nothing about that into the file, and there is no device to tell.
std::vector<std::string> WhatNoFileSays(const Change& change) {
  if (!change.target.file.empty()) {
    for (const XmlElement& setting : ReadXml(change.settings.text).children) {
      if (setting.name == "snmpEnabledSetting" && !ReadBool(setting.text)) {
        return {"snmpEnabledSetting is false, but a file does not say that: stop the daemon to switch SNMP off"};
      }
    }
  }
  return {};
}

ExitStatus Apply(const Arguments& arguments, Console& console) {
  return GuardStops(arguments, console, PrintStopOfChange(TargetName(arguments), console), [&](Stage& stage) {
    RequireAnswer(arguments, console);
    Change change;
    change.target = ReadTarget(arguments);
    change.settings = ReadSettings(arguments);
    change.accepted = AcceptedRules(arguments);
    change.restartCommand = RestartWords(arguments);
    return MakeChange(
        change, [&change](const Plan&) { return WhatNoFileSays(change); }, arguments, console, stage);
  });
}

}  // namespace

Command MakeApply() {
  return {"apply",
          "Give settings to a device through the agent, and keep what was there",
          {kDeviceUnlessFile, kSettingsOfTarget, kProjectUnlessFile, kModuleFolder, kDeviceState, kFile, kSnapshots, kAccept,
           kDryRun, kDiff, kYes, kRestart, kNoProbe, kChangeJson, kShowSecrets},
          kFooter,
          &Apply};
}

}  // namespace devhost

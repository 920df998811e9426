#include "devhost/preview/Preview.h"

#include <nlohmann/json.hpp>
#include <string>

#include "devhost/commands/ChangeOutput.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/commands/Findings.h"
#include "devhost/json/FindingObject.h"
#include "devhost/project/ChosenDevice.h"
#include "devhost/project/Project.h"
#include "devhost/state/StateFolder.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kState{"--state", "DIR", "Folder with the drivers' states, which is only read", Takes::Folder};

const CommandOption kOneObject{"--json", "", "Print one JSON object: device, verdict, difference, findings, messages"};

constexpr char kFooter[] =
    "The device is only asked for its settings and its file. Its driver is loaded and started\n"
    "for that, since only the driver knows where the file is, but no setter, CopyTo, action or\n"
    "command reaches it, and states are not kept. The agent of the project then makes the\n"
    "change on a scratch device with the same answers. The time stamp of the section is left\n"
    "out of the comparison. Below the difference stands what the change drops from the file.\n"
    "\n"
    "Exit status: 0 nothing would change; 1 something would; 2 wrong usage, a project, device,\n"
    "file or state folder that is wrong, the agent would refuse, or a driver failed.\n"
    "\n"
    "Example: what would these settings change?\n"
    "\n"
    "  devhost preview --project project.xml kitchen kitchen.xml";

PreviewInput ReadInput(const Arguments& arguments) {
  const std::string file = arguments.Text(kDeviceProject);
  const ChosenDevice chosen = ChooseDevice(file, ReadProject(file, ModuleFolder(arguments)), arguments.Text(kDevice));
  PreviewInput input;
  input.agent = chosen.agent;
  input.device = chosen.device;
  input.settings = ReadNamedText(arguments.Text(kSettings));
  input.state = arguments.Has(kState) ? LookIntoStateFolder(arguments.Text(kState), input.device.id) : "";
  input.showSecrets = arguments.Has(kShowSecrets);
  return input;
}

const char* NameOf(PreviewResult::Verdict verdict) {
  switch (verdict) {
    case PreviewResult::Verdict::Unchanged:
      return "unchanged";
    case PreviewResult::Verdict::Changed:
      return "changed";
    case PreviewResult::Verdict::Refused:
      return "refused";
    case PreviewResult::Verdict::Failed:
      return "failed";
  }
  return "";
}

ExitStatus StatusOf(PreviewResult::Verdict verdict) {
  return verdict == PreviewResult::Verdict::Unchanged ? ExitStatus::Good
         : verdict == PreviewResult::Verdict::Changed ? ExitStatus::Failed
                                                      : ExitStatus::Wrong;
}

void PrintJson(const PreviewResult& result, const std::string& device, Stage stage, Output& out) {
  nlohmann::ordered_json findings = nlohmann::ordered_json::array();
  for (const Finding& loss : result.losses) {
    findings.push_back(FindingObject(loss));
  }
  nlohmann::ordered_json object = {{"device", device},
                                   {"verdict", NameOf(result.verdict)},
                                   {"difference", result.difference},
                                   {"findings", findings},
                                   {"messages", result.messages}};
  if (StatusOf(result.verdict) == ExitStatus::Wrong) {
    object["stage"] = NameOf(stage);
    object["reason"] = Joined(result.messages);
  }
  PrintObject(object, out);
}

void PrintText(const PreviewResult& result, Console& console) {
  if (StatusOf(result.verdict) == ExitStatus::Wrong) {
    for (const std::string& message : result.messages) {
      console.Complain(message);
    }
    return;
  }
  const bool changed = result.verdict == PreviewResult::Verdict::Changed;
  console.Out().Write(changed ? result.difference : "nothing would change in the " + OneLine(result.file) + "\n");
  for (const Finding& loss : result.losses) {
    console.Out().Write(FindingText(loss));
  }
  for (const std::string& message : result.messages) {
    console.Out().Write(OneLine(message) + "\n");
  }
}

// Whatever goes wrong, the status is not the one that says that something would change.
ExitStatus Preview(const Arguments& arguments, Console& console) {
  const PrintStop printStop = [&](Stage stage, const std::string& reason) {
    const PreviewResult failed{PreviewResult::Verdict::Failed, "", "", {}, {reason}, {}, {}};
    PrintJson(failed, arguments.Text(kDevice), stage, console.Out());
  };
  return GuardStops(arguments, console, printStop, [&](Stage& stage) {
    const PreviewInput input = ReadInput(arguments);
    stage = Stage::Plan;
    const PreviewResult result = PreviewChange(input);
    if (arguments.Has(kOneObject)) {
      PrintJson(result, input.device.name, stage, console.Out());
    } else {
      PrintText(result, console);
    }
    return console.Out().Error() == 0 ? StatusOf(result.verdict) : ExitStatus::Wrong;
  });
}

}  // namespace

Command MakePreview() {
  return {"preview",
          "Show what SetDeviceState would change in a device's file",
          {kDevice, kSettings, kDeviceProject, kModuleFolder, kState, kOneObject, kShowSecrets},
          kFooter,
          &Preview};
}

}  // namespace devhost

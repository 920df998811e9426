#include "devhost/preview/Preview.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/project/DriverNames.h"
#include "devhost/project/Project.h"
#include "devhost/state/StateFolder.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

constexpr std::string_view kAgentModule = "snmp_configuration_agent.so";

const CommandOption kDevice{"device", "", "Name or id of the device's driver in the project", Takes::Text, true};
const CommandOption kProject{"--project", "FILE", "Project file", Takes::Path, true};
const CommandOption kState{"--state", "DIR", "Folder with the drivers' states, which is only read", Takes::Path};

constexpr char kFooter[] =
    "The agent of the project does it, on a scratch copy of the device. The project's own\n"
    "folders are only read, and no daemon is started. The time stamp of the section is left\n"
    "out of the comparison.\n"
    "\n"
    "Exit status: 0 the answer was printed; 1 the agent refused the settings or a driver\n"
    "failed; 2 wrong usage, or a project, device, file or state folder that is wrong.\n"
    "\n"
    "Example: what would these settings change?\n"
    "\n"
    "  devhost preview --project project.xml kitchen kitchen.xml";

// Loading a driver to see whether it is the agent would let a device loose on its real folder, so the module's name decides.
bool IsAgent(const DriverEntry& driver) {
  return std::string_view(driver.module).substr(driver.module.rfind('/') + 1) == kAgentModule;
}

// The device and the agent of the project `file`. Throws PreviewError when the project does not have them.
PreviewInput ChooseDrivers(const std::string& file, const Project& project, const std::string& device) {
  PreviewInput input;
  try {
    const unsigned long id = DriverNames(project.drivers).Find(device);
    for (const DriverEntry& driver : project.drivers) {
      input.device = driver.id == id ? driver : input.device;
      input.agent = input.agent.module.empty() && IsAgent(driver) ? driver : input.agent;
    }
  } catch (const std::runtime_error& error) {
    throw PreviewError(file + ": " + error.what());
  }
  if (input.agent.module.empty()) {
    throw PreviewError(file + ": no driver of the project has the module " + std::string(kAgentModule) +
                       "; allowed: a project with the agent in it");
  }
  return input;
}

ExitStatus Preview(const Arguments& arguments, Console& console) {
  const std::string file = arguments.Text(kProject);
  PreviewInput input = ChooseDrivers(file, ReadProject(file, ModuleFolder(arguments)), arguments.Text(kDevice));
  input.settings = ReadNamedText(arguments.Text(kSettings));
  input.state = arguments.Has(kState) ? LookIntoStateFolder(arguments.Text(kState), input.device.id) : "";
  input.showSecrets = arguments.Has(kShowSecrets);
  const PreviewResult result = PreviewChange(input);
  for (const std::string& complaint : result.complaints) {
    console.Complain(complaint);
  }
  if (!result.complaints.empty()) {
    return ExitStatus::Failed;
  }
  console.Out().Write(result.difference.empty() ? "nothing would change in " + OneLine(result.file) + "\n"
                                                : result.difference);
  return ExitStatus::Good;
}

}  // namespace

Command MakePreview() {
  return {"preview",
          "Show what SetDeviceState would change in a device's file",
          {kDevice, kSettings, kProject, kModuleFolder, kState, kShowSecrets},
          kFooter,
          &Preview};
}

}  // namespace devhost

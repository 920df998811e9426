#include "devhost/commands/PreviewCommand.h"

#include <algorithm>
#include <string_view>

#include "devhost/commands/ExitStatus.h"
#include "devhost/preview/Preview.h"
#include "devhost/preview/PreviewError.h"
#include "devhost/project/DriverNames.h"
#include "devhost/project/Project.h"
#include "devhost/state/StateFolder.h"
#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr std::string_view kAgentModule = "snmp_configuration_agent.so";

const DriverEntry& FindDevice(const Project& project, const PreviewOptions& options) {
  unsigned long id = 0;
  try {
    id = DriverNames(project.drivers).Find(options.device);
  } catch (const std::runtime_error& error) {
    throw PreviewError(options.project + ": " + error.what());
  }
  return *std::find_if(project.drivers.begin(), project.drivers.end(),
                       [id](const DriverEntry& driver) { return driver.id == id; });
}

// Loading a driver to see whether it is the agent would let a device loose on its real folder, so the module's name decides.
const DriverEntry& FindAgent(const Project& project, const PreviewOptions& options) {
  const auto isAgent = [](const DriverEntry& driver) {
    return std::string_view(driver.module).substr(driver.module.rfind('/') + 1) == kAgentModule;
  };
  const auto found = std::find_if(project.drivers.begin(), project.drivers.end(), isAgent);
  if (found == project.drivers.end()) {
    throw PreviewError(options.project + ": no driver of the project has the module " + std::string(kAgentModule) +
                       "; allowed: a project with the agent in it");
  }
  return *found;
}

int Preview(const PreviewOptions& options, Output& out, Output& errors) {
  const Project project = ReadProject(options.project, options.moduleFolder);
  PreviewInput input;
  input.device = FindDevice(project, options);
  input.agent = FindAgent(project, options);
  input.settings = ReadNamedText(options.settings);
  input.state = options.state.empty() ? "" : LookIntoStateFolder(options.state, input.device.id);
  input.showSecrets = options.showSecrets;
  const PreviewResult result = PreviewChange(input);
  for (const std::string& complaint : result.complaints) {
    errors.Write("devhost: " + OneLine(complaint) + "\n");
  }
  if (!result.complaints.empty()) {
    return ExitStatus_Failed;
  }
  out.Write(result.difference.empty() ? "nothing would change in " + OneLine(result.file) + "\n" : result.difference);
  return ExitStatus_Good;
}

}  // namespace

int RunPreview(const PreviewOptions& options, Output& out, Output& errors) {
  try {
    return Preview(options, out, errors);
  } catch (const PreviewError& error) {
    errors.Write("devhost: " + OneLine(error.what()) + "\n");
  }
  return ExitStatus_Wrong;
}

}  // namespace devhost

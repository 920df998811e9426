#include "devhost/commands/PreviewCommand.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "devhost/commands/ExitStatus.h"
#include "devhost/engine/Host.h"
#include "devhost/preview/FileDifference.h"
#include "devhost/preview/ScratchDevice.h"
#include "devhost/project/DriverNames.h"
#include "devhost/project/Project.h"
#include "devhost/secrets/Secrets.h"
#include "devhost/state/StateFolder.h"
#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

constexpr std::string_view kAgentModule = "snmp_configuration_agent.so";

// Something that is wrong with what the command was given, in one line.
class PreviewError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What drivers say while they work on the copy; of interest when something goes wrong only.
class Complaints : public HostObserver {
 public:
  void OnOccurrence(const Occurrence& occurrence) override {
    using Kind = Occurrence::Kind;
    const bool failed = occurrence.kind == Kind::Failure || occurrence.kind == Kind::Manners;
    m_failed = m_failed || failed;
    if (failed || occurrence.kind == Kind::Log) {
      const std::string driver = DriverOf(occurrence);
      m_lines.push_back((driver.empty() ? "" : driver + ": ") + TextOf(occurrence));
    }
  }
  bool Failed() const { return m_failed; }
  const std::vector<std::string>& Lines() const { return m_lines; }

 private:
  bool m_failed = false;
  std::vector<std::string> m_lines;
};

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

// The text of the settings element, which has to be for that device: the agent goes by the element's id.
std::string ReadSettings(const PreviewOptions& options, const DriverEntry& device) {
  const NamedText file = ReadNamedText(options.settings);
  XmlElement root;
  try {
    root = ReadXml(file.text);
  } catch (const XmlError& error) {
    throw PreviewError(file.name + ":" + std::to_string(error.Line()) + ": no XML: " + OneLine(error.what()) +
                       "; allowed: one device settings element");
  }
  const auto isId = [](const XmlElement& child) { return child.name == "deviceId"; };
  const auto id = std::find_if(root.children.begin(), root.children.end(), isId);
  const std::string wanted = std::to_string(device.id);
  if (id == root.children.end() || id->text != wanted) {
    const std::size_t line = id == root.children.end() ? root.line : id->line;
    throw PreviewError(
        file.name + ":" + std::to_string(line) + ": " +
        (id == root.children.end() ? "the settings name no device" : "the settings are for device " + Quoted(id->text)) +
        "; allowed: <deviceId>" + wanted + "</deviceId>, for " + device.name);
  }
  return file.text;
}

// A device that its kept state says is off line would accept the text for later, and nothing would be seen of it. So the
// copy is put on line, as the device will be.
void PutOnLine(Host& host, unsigned long device) {
  const std::vector<std::string> commands = host.Commands(device);
  if (std::find(commands.begin(), commands.end(), "SetOnline") != commands.end()) {
    host.Command(device, "SetOnline", {{"online", "true"}});
  }
}

// Lets the agent work on the copy and returns its reply.
std::string Apply(const DriverEntry& agent, const ScratchDevice& scratch, const std::string& settings, StateStore& states,
                  Complaints& complaints) {
  Host host(complaints, &states);
  host.Load(agent);
  host.Load(scratch.Driver());
  PutOnLine(host, scratch.Driver().id);
  const std::string reply = host.Command(agent.id, "SetDeviceState", {{"xml", settings}});
  host.Stop();
  return reply;
}

int Fail(const std::string& problem, const Complaints& complaints, bool showSecrets, Output& errors) {
  for (const std::string& line : complaints.Lines()) {
    errors.Write("devhost: " + OneLine(showSecrets ? line : MaskXml(MaskConfigText(line))) + "\n");
  }
  errors.Write("devhost: " + OneLine(problem) + "\n");
  return ExitStatus_Failed;
}

int Preview(const PreviewOptions& options, Output& out, Output& errors) {
  const Project project = ReadProject(options.project, options.moduleFolder);
  const DriverEntry& device = FindDevice(project, options);
  const DriverEntry& agent = FindAgent(project, options);
  const std::string settings = ReadSettings(options, device);
  StateMemory states;
  if (!options.state.empty()) {
    states.Save(device.id, LookIntoStateFolder(options.state, device.id));
  }
  const ScratchDevice scratch(device);
  Complaints complaints;
  std::string reply;
  try {
    reply = Apply(agent, scratch, settings, states, complaints);
  } catch (const HostError& error) {
    return Fail(error.what(), complaints, options.showSecrets, errors);
  }
  if (reply != "<Success/>") {
    return Fail("SetDeviceState would answer " + reply + " and leave " + scratch.RealPath() + " as it is", complaints,
                options.showSecrets, errors);
  }
  if (complaints.Failed()) {
    return Fail("a driver has failed on the copy; the preview would not be sure", complaints, options.showSecrets, errors);
  }
  const std::string difference = FileDifference(scratch.RealPath(), scratch.RealText(), scratch.Text(), options.showSecrets);
  out.Write(difference.empty() ? "nothing would change in " + OneLine(scratch.RealPath()) + "\n" : difference);
  return ExitStatus_Good;
}

}  // namespace

int RunPreview(const PreviewOptions& options, Output& out, Output& errors) {
  try {
    return Preview(options, out, errors);
  } catch (const PreviewError& error) {
    errors.Write("devhost: " + OneLine(error.what()) + "\n");
  } catch (const ScratchError& error) {
    errors.Write("devhost: " + OneLine(error.what()) + "\n");
  }
  return ExitStatus_Wrong;
}

}  // namespace devhost

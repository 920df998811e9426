#include "devhost/preview/Preview.h"

#include <algorithm>
#include <cstddef>

#include "devhost/engine/Host.h"
#include "devhost/preview/FileDifference.h"
#include "devhost/preview/ScratchDevice.h"
#include "devhost/secrets/Masker.h"
#include "devhost/secrets/Secrets.h"
#include "devhost/state/StateStore.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

// Keeps what drivers say while they work on the copy; it is of interest only when something goes wrong.
struct Complaints : HostObserver {
  void OnOccurrence(const Occurrence& occurrence) override {
    const bool fails = occurrence.kind == Occurrence::Kind::Failure || occurrence.kind == Occurrence::Kind::Manners;
    hasFailure = hasFailure || fails;
    if (fails || occurrence.kind == Occurrence::Kind::Log) {
      const std::string driver = DriverOf(occurrence);
      lines.push_back((driver.empty() ? "" : driver + ": ") + TextOf(occurrence));
    }
  }

  bool hasFailure = false;
  std::vector<std::string> lines;
};

// The agent goes by the id in the settings, so they have to be for this device.
void CheckSettings(const NamedText& settings, const DriverEntry& device) {
  const std::string wanted = "; allowed: <deviceId>" + std::to_string(device.id) + "</deviceId>, for " + device.name;
  const auto fail = [&settings](std::size_t line, const std::string& problem) {
    throw PreviewError(settings.name + ":" + std::to_string(line) + ": " + problem);
  };
  try {
    const XmlElement root = ReadXml(settings.text);
    const auto id = std::find_if(root.children.begin(), root.children.end(),
                                 [](const XmlElement& child) { return child.name == "deviceId"; });
    if (id == root.children.end()) {
      fail(root.line, "the settings do not name a device" + wanted);
    } else if (id->text != std::to_string(device.id)) {
      fail(id->line, "the settings are for device " + Quoted(id->text) + wanted);
    }
  } catch (const XmlError& error) {
    fail(error.Line(), std::string("not well-formed XML: ") + error.what() + "; allowed: one device settings element");
  }
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
std::string Apply(const PreviewInput& input, const DriverEntry& copy, Complaints& complaints) {
  StateMemory states;
  states.Save(copy.id, input.state);
  Host host(complaints, &states);
  host.Load(input.agent);
  host.Load(copy);
  PutOnLine(host, copy.id);
  const std::string reply = host.Command(input.agent.id, "SetDeviceState", {{"xml", input.settings.text}});
  host.Stop();
  return reply;
}

// Why the copy is not what the device would become, or "".
std::string ProblemOf(const PreviewInput& input, const ScratchDevice& scratch, Complaints& complaints) {
  try {
    const std::string reply = Apply(input, scratch.Driver(), complaints);
    if (reply != "<Success/>") {
      return "SetDeviceState would answer " + reply + " and leave " + scratch.RealPath() + " as it is";
    }
  } catch (const HostError& error) {
    return error.what();
  }
  return complaints.hasFailure ? "a driver has failed on the copy; the preview would not be sure" : "";
}

// Hides the secrets of the device, which drivers may quote.
void Mask(std::vector<std::string>& lines, const PreviewInput& input, const std::string& file) {
  Masker masker(input.showSecrets);
  masker.LearnFromXml(input.settings.text);
  masker.LearnFromXml(input.device.configXml);
  masker.LearnFromXml(input.state);
  masker.LearnFromConfig(file);
  for (std::string& line : lines) {
    line = masker.Text(input.showSecrets ? line : MaskXml(MaskConfigText(line)));
  }
}

}  // namespace

PreviewResult PreviewChange(const PreviewInput& input) {
  CheckSettings(input.settings, input.device);
  const ScratchDevice scratch(input.device);
  Complaints complaints;
  const std::string problem = ProblemOf(input, scratch, complaints);
  if (problem.empty()) {
    return {
        scratch.RealPath(), FileDifference(scratch.RealPath(), scratch.RealText(), scratch.Text(), input.showSecrets), {}};
  }
  complaints.lines.push_back(problem);
  Mask(complaints.lines, input, scratch.RealText());
  return {scratch.RealPath(), "", complaints.lines};
}

}  // namespace devhost

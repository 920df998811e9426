#include "devhost/preview/Preview.h"

#include <algorithm>
#include <utility>

#include "devhost/engine/Host.h"
#include "devhost/preview/FileDifference.h"
#include "devhost/preview/Losses.h"
#include "devhost/preview/ScratchDevice.h"
#include "devhost/secrets/Masker.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Verdict = PreviewResult::Verdict;

// Keeps what is said about the scratch device, which is of interest only when something goes wrong.
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
void CheckSettings(const NamedText& settings, const DriverEntry& device, Masker& masker) {
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
      const std::string named = masker.Fields({{id->name, id->text}}).front().second;
      fail(id->line, "the settings are for device " + Quoted(named) + wanted);
    }
  } catch (const XmlError& error) {
    fail(error.Line(), std::string("not well-formed XML: ") + error.what() + "; allowed: one device settings element");
  }
}

// What has become of a change that was tried.
struct Trial {
  Verdict verdict = Verdict::Failed;
  DeviceAnswers before;
  DeviceAnswers after;
  std::string edited;   // the file that the agent gets
  std::string problem;  // why `after` is not what the device would become, or ""
};

// The agent, and nothing of the device but its answers, in a host inside the life of the device's. Returns the agent's
// reply.
std::string LetAgentChange(const PreviewInput& input, Host& around, DeviceAnswers& content, Complaints& complaints) {
  Host host(complaints, around);
  host.Load(input.agent);
  DriverEntry scratch = input.device;
  scratch.configXml.clear();
  host.Load(scratch, [&](IInstanceManager& instances) { return new ScratchDevice(instances, content); });
  if (input.listsFirst) {
    host.Command(input.agent.id, "GetDeviceList", {});
  }
  return host.Command(input.agent.id, "SetDeviceState", {{"xml", input.settings.text}});
}

void Try(const PreviewInput& input, const std::string& file, DeviceLife& life, const DeviceLife::File* known,
         Complaints& complaints, Trial& trial) {
  trial.before = known != nullptr ? life.AskSettings(input.state, *known) : life.Ask(input.state);
  if (!trial.before.problem.empty()) {
    trial.problem = input.device.name + ": " + trial.before.problem;
    return;
  }
  trial.after = trial.before;
  if (input.edit) {
    input.edit(trial.after.file);
  }
  trial.edited = trial.after.file;
  const std::string reply = LetAgentChange(input, *life.GetHost(), trial.after, complaints);
  if (reply != "<Success/>") {
    const int status = trial.before.copyStatus;
    const std::string reason =
        status == 0 ? "" : "CopyFrom of " + input.device.name + " gave " + std::to_string(status) + ": ";
    trial.verdict = Verdict::Refused;
    trial.problem = reason + "SetDeviceState would answer " + reply + " and leave the " + file + " as it is";
  } else if (life.HasFailed() || complaints.hasFailure) {
    trial.problem = "a driver has failed; the preview would not be sure";
  } else {
    trial.verdict = Verdict::Unchanged;
  }
}

void Show(const PreviewInput& input, const Trial& trial, Masker& masker, PreviewResult& result) {
  if (!IsSameFile(trial.before.file, trial.after.file)) {
    result.verdict = Verdict::Changed;
    if (input.wantsDifference) {
      const std::string after = result.file + " after SetDeviceState";
      result.difference = FileDifference({result.file, trial.before.file}, {after, trial.after.file}, masker);
    }
    result.losses = LossesOf(trial.edited, trial.after.file, result.file, input.showSecrets);
  }
  if (trial.before.copyStatus == kCannotBeReached) {
    result.messages.push_back(input.device.name +
                              " cannot be reached now (CopyFrom gave -9): its file was compared as it was last known, and "
                              "what is written waits until the device is back");
  }
  if (const std::string waiting = WaitingChange(input.device.name, input.state); !waiting.empty()) {
    result.messages.push_back(waiting);
  }
}

std::vector<std::string> LinesOf(const DeviceLife& life, const Complaints& complaints) {
  std::vector<std::string> lines;
  for (const DeviceLife::Heard& heard : life.GetHeard()) {
    if (heard.kind != Occurrence::Kind::Status && heard.kind != Occurrence::Kind::StateProblem) {
      lines.push_back(heard.line);
    }
  }
  lines.insert(lines.end(), complaints.lines.begin(), complaints.lines.end());
  return lines;
}

// Learns the secrets of the device and of the change, which drivers may quote.
void LearnSecrets(const PreviewInput& input, const DeviceAnswers& answers, Masker& masker) {
  masker.Xml(input.settings.text);
  masker.Xml(input.device.configXml);
  masker.Xml(input.state);
  masker.Config(answers.file);
  masker.Secret(answers.communityRead.value);
  masker.Secret(answers.communityWrite.value);
  for (const TrapTarget& target : answers.trapTargets.value) {
    masker.Secret(target.community);
  }
}

}  // namespace

std::string WaitingChange(const std::string& device, const std::string& state) {
  if (state.empty()) {
    return "";
  }
  const XmlElement root = ReadXml(state);
  const auto has = [&root](const char* name) {
    return std::any_of(root.children.begin(), root.children.end(),
                       [name](const XmlElement& child) { return child.name == name; });
  };
  const bool waits = has("pending") && has("base");
  return waits
             ? "a change of " + device +
                   " waits, which was made while it could not be reached: the next change or start of its daemon brings it "
                   "to the device, unless somebody has changed the file there meanwhile"
             : "";
}

PreviewResult PreviewChange(const PreviewInput& input) {
  DeviceLife life(input.agent, input.device);
  return PreviewChange(input, life);
}

PreviewResult PreviewChange(const PreviewInput& input, DeviceLife& life, const DeviceLife::File* file) {
  Masker& masker = life.GetMasker(input.showSecrets);
  CheckSettings(input.settings, input.device, masker);
  const std::string name = input.file.empty() ? "snmpd.conf of " + input.device.name : input.file;
  PreviewResult result{Verdict::Failed, name, "", {}, {}, {}, {}};
  Complaints complaints;
  Trial trial;
  try {
    Try(input, result.file, life, file, complaints, trial);
  } catch (const HostError& error) {
    trial.problem = error.what();
  }
  result.verdict = trial.verdict;
  LearnSecrets(input, trial.before, masker);
  if (trial.problem.empty()) {
    Show(input, trial, masker, result);
  } else {
    for (const std::string& line : LinesOf(life, complaints)) {
      result.messages.push_back(masker.Text(line, WrittenBy::Others));
    }
    result.messages.push_back(masker.Text(trial.problem));
  }
  result.before = std::move(trial.before);
  result.after = std::move(trial.after);
  return result;
}

}  // namespace devhost

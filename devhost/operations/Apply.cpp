#include "devhost/operations/Apply.h"

#include <exception>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "devhost/check/Advice.h"
#include "devhost/engine/Host.h"
#include "devhost/operations/Overridden.h"
#include "devhost/operations/RestartCommand.h"
#include "devhost/preview/FileDifference.h"
#include "devhost/preview/Preview.h"
#include "devhost/secrets/Masker.h"
#include "devhost/state/StateFolder.h"

namespace devhost {

namespace {

using Kind = Occurrence::Kind;

// What the drivers say while a change is made.
struct Listener : HostObserver {
  void OnOccurrence(const Occurrence& occurrence) override {
    const bool isProblem = occurrence.kind == Kind::Failure || occurrence.kind == Kind::Manners ||
                           occurrence.kind == Kind::StateProblem || occurrence.kind == Kind::Status;
    if (isProblem || occurrence.kind == Kind::Log) {
      const std::string driver = DriverOf(occurrence);
      lines.push_back((driver.empty() ? "" : driver + ": ") + TextOf(occurrence));
    }
    losesState = losesState || occurrence.kind == Kind::StateProblem;
  }

  bool losesState = false;
  std::vector<std::string> lines;
};

// The state of one device. Others are neither handed theirs nor asked for a new one: the agent has not heard of the
// project's variables here, and would keep none of their flags.
class StateOfOne : public StateStore {
 public:
  StateOfOne(StateStore& states, unsigned long deviceId) : m_states(states), m_deviceId(deviceId) {}

  h7::auto_com<H7XML::INode> Load(unsigned long driverId) override {
    return driverId == m_deviceId ? m_states.Load(driverId) : h7::auto_com<H7XML::INode>();
  }
  void Save(unsigned long driverId, const std::string& xml) override {
    if (driverId == m_deviceId) {
      m_states.Save(driverId, xml);
    }
  }

 private:
  StateStore& m_states;
  const unsigned long m_deviceId;
};

PreviewInput InputOf(const Change& change) {
  const Target& target = change.target;
  PreviewInput input;
  input.agent = target.chosen.agent;
  input.device = target.chosen.device;
  input.settings = change.settings;
  input.showSecrets = target.showSecrets;
  input.listsFirst = true;
  input.file = FileNameOf(target);
  input.edit = change.edit;
  std::error_code ignored;
  if (!target.stateFolder.empty() && std::filesystem::exists(target.stateFolder, ignored)) {
    input.state = LookIntoStateFolder(target.stateFolder, input.device.id);
  }
  return input;
}

// Why the findings stop a change, or "".
std::string WhyStopped(const Change& change, const std::vector<Finding>& findings) {
  std::set<std::string> rules;
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::Error && change.accepted.count(finding.rule) == 0) {
      rules.insert(finding.rule);
    }
  }
  std::string names;
  for (const std::string& rule : rules) {
    names += (names.empty() ? "" : ", ") + rule;
  }
  return names.empty() ? "" : "the change is not made because of " + names + ": remove the cause, or accept the rule";
}

// Adds what the file will have besides the section that wins over it, or adds to it. The change is not wrong because of
// that, so none of it stops the change.
void AddOverridden(bool showSecrets, Plan& plan) {
  const std::string file = plan.difference.empty() ? plan.file : plan.file + " after SetDeviceState";
  for (Finding& finding : OverridingLines(plan.after.file, file, showSecrets)) {
    finding.severity = Severity::Warning;
    plan.findings.push_back(std::move(finding));
  }
}

// Judges the settings, and what the file would lose. Returns why that stops the change, or "".
std::string Judge(const Change& change, const PreviewResult& preview, Plan& plan) {
  const std::set<std::string> held = HeldSettings(plan.before.settings);
  const bool showSecrets = change.target.showSecrets;
  plan.findings = Advise(change.settings.text, change.settings.name, showSecrets, &held);
  plan.findings.insert(plan.findings.end(), preview.losses.begin(), preview.losses.end());
  const std::string reason = WhyStopped(change, plan.findings);
  AddOverridden(showSecrets, plan);
  return reason;
}

// Compares what the device answers now with what it would answer then.
void Compare(const Change& change, const PreviewInput& input, const PreviewResult& preview, Plan& plan) {
  Masker masker(input.showSecrets);
  LearnSecrets(input, preview.before, masker);
  plan.before = {preview.before.file, EffectiveSettings(input.agent, input.device, preview.before)};
  plan.after = {preview.after.file, SettingsElement(preview.after, input.device.id)};
  plan.settings = CompareSettings(plan.before.settings, plan.after.settings, masker);
  const std::string reason = Judge(change, preview, plan);
  const bool settingsCount = !change.target.stateFolder.empty() && !plan.settings.empty();
  const bool changes = preview.verdict == PreviewResult::Verdict::Changed || settingsCount;
  if (!changes) {
    plan.settings.clear();
  }
  if (!reason.empty()) {
    plan.messages.push_back(reason);
  } else {
    plan.verdict = changes ? Plan::Verdict::Change : Plan::Verdict::Nothing;
  }
}

bool AreSame(const DeviceCopy& one, const DeviceCopy& other) {
  return one.settings == other.settings && IsSameFile(one.file, other.file);
}

// Lets the agent change the device. Returns why it did not, or "".
std::string LetAgentChange(const Change& change, StateStore* states, Listener& listener) {
  const ChosenDevice& chosen = change.target.chosen;
  try {
    Host host(listener, states);
    host.EditCopies(change.edit);
    host.Load(chosen.agent);
    host.Load(chosen.device);
    host.Command(chosen.agent.id, "GetDeviceList", {});
    const std::string reply = host.Command(chosen.agent.id, "SetDeviceState", {{"xml", change.settings.text}});
    host.Stop();
    return reply == "<Success/>" ? "" : "SetDeviceState answered " + reply;
  } catch (const HostError& error) {
    return error.what();
  }
}

// Says what the drivers said, and what else is of interest, with the secrets of the change masked.
void Say(const Change& change, const Plan& plan, const std::vector<std::string>& lines, Applied& applied) {
  Masker masker(change.target.showSecrets);
  masker.Xml(change.settings.text);
  masker.Xml(change.target.chosen.device.configXml);
  masker.Xml(plan.before.settings);
  masker.Config(plan.before.file);
  masker.Config(plan.after.file);
  for (const std::string& line : lines) {
    applied.messages.push_back(masker.Text(line, WrittenBy::Others));
  }
}

std::string NamesOf(const std::vector<SettingChange>& changes) {
  std::string names;
  for (const SettingChange& change : changes) {
    names += (names.empty() ? "" : ", ") + change.name;
  }
  return names;
}

// Looks at the device once more, and keeps in the snapshot what is there now. Returns whether the change is in the file.
bool LookAgain(const Change& change, SnapshotFolder& snapshots, Applied& applied) {
  try {
    const Plan found = PlanChange(change);
    if (found.verdict == Plan::Verdict::Stop || !found.difference.empty()) {
      applied.messages.insert(applied.messages.end(), found.messages.begin(), found.messages.end());
      applied.messages.push_back("the " + found.file + " is not as it was planned: the same change would change it again");
      return false;
    }
    if (!found.settings.empty()) {
      applied.messages.push_back("the driver does not keep these settings after its end: " + NamesOf(found.settings));
    }
    try {
      snapshots.Finish(applied.snapshot, found.before);
      applied.verdict = found.isReachable ? Applied::Verdict::Done : Applied::Verdict::Waits;
    } catch (const SnapshotError& error) {
      applied.messages.push_back(std::string("the change is made, but its snapshot is not finished: ") + error.what());
    }
    return found.isReachable;
  } catch (const std::exception& error) {
    applied.messages.push_back(std::string("what is there now is not known: ") + error.what());
    return false;
  }
}

// Has the daemon read its file, now that the change of snapshot `number` is in there. Returns whether it did.
bool Restart(const Change& change, const Plan& plan, unsigned long number, SnapshotFolder& snapshots, Applied& applied) {
  const std::string problem = RunRestartCommand(change.restartCommand);
  if (!problem.empty()) {
    Say(change, plan, {"the file is changed, but the restart command has failed: " + problem}, applied);
    return false;
  }
  try {
    snapshots.EndRestart(number);
  } catch (const SnapshotError& error) {
    applied.messages.push_back(std::string("the next call will restart again: ") + error.what());
  }
  return true;
}

// Does what is left of an earlier change.
void RestartLate(const Change& change, const Plan& plan, SnapshotFolder& snapshots, Applied& applied) {
  const std::string of = " of the change of snapshot " + std::to_string(plan.restartDue);
  applied.verdict = Applied::Verdict::NotRestarted;
  if (change.restartCommand.empty()) {
    applied.messages = {"the daemon has not been told" + of + ": its restart command has not succeeded; give one again"};
  } else if (Restart(change, plan, plan.restartDue, snapshots, applied)) {
    applied.verdict = Applied::Verdict::Restarted;
    applied.messages.push_back("the restart" + of + " was due, and the restart command was run now");
  }
}

}  // namespace

std::string FileNameOf(const Target& target) {
  return target.file.empty() ? "snmpd.conf of " + target.chosen.device.name : target.file;
}

Plan PlanChange(const Change& change) {
  Plan plan;
  const PreviewInput input = InputOf(change);
  const PreviewResult preview = PreviewChange(input);
  plan.file = preview.file;
  plan.difference = preview.difference;
  plan.messages = preview.messages;
  plan.isReachable = preview.before.copyStatus != kCannotBeReached;
  if (preview.verdict == PreviewResult::Verdict::Unchanged || preview.verdict == PreviewResult::Verdict::Changed) {
    Compare(change, input, preview, plan);
  } else {
    Judge(change, preview, plan);
  }
  if (plan.verdict == Plan::Verdict::Nothing && plan.isReachable) {
    plan.restartDue = RestartDue(change.target.snapshotFolder, change.target.chosen.device.id);
  }
  return plan;
}

Applied ApplyChange(const Change& change, const Plan& plan, std::int64_t time) {
  Applied applied;
  const DriverEntry& device = change.target.chosen.device;
  SnapshotFolder snapshots(change.target.snapshotFolder, device.id);
  std::optional<StateFolder> folder;
  std::optional<StateOfOne> states;
  if (!change.target.stateFolder.empty()) {
    folder.emplace(change.target.stateFolder);
    states.emplace(*folder, device.id);
  }
  // Both folders are locked now, so this is the state in which the device is changed.
  const Plan again = PlanChange(change);
  if (again.verdict == Plan::Verdict::Stop) {
    applied.messages = again.messages;
    return applied;
  }
  if (!AreSame(again.before, plan.before) || !AreSame(again.after, plan.after)) {
    applied.messages = {device.name + " was changed since the plan was made; look at it again"};
    return applied;
  }
  if (again.restartDue != 0) {
    RestartLate(change, again, snapshots, applied);
    return applied;
  }
  if (again.verdict == Plan::Verdict::Nothing) {
    applied.messages = {"there is nothing to change on " + device.name};
    return applied;
  }
  const bool restarts = !change.restartCommand.empty();
  applied.snapshot = snapshots.Begin(change.operation, device.name, again.before, time, restarts);
  applied.verdict = Applied::Verdict::Failed;
  Listener listener;
  const std::string problem = LetAgentChange(change, states ? &*states : nullptr, listener);
  if (!problem.empty()) {
    listener.lines.push_back(problem);
  }
  Say(change, again, listener.lines, applied);
  const bool isInFile = problem.empty() && !listener.losesState && LookAgain(change, snapshots, applied);
  if (isInFile && restarts && !Restart(change, again, applied.snapshot, snapshots, applied) &&
      applied.verdict == Applied::Verdict::Done) {
    applied.verdict = Applied::Verdict::NotRestarted;
  }
  return applied;
}

}  // namespace devhost

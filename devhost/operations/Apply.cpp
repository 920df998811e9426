#include "devhost/operations/Apply.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "devhost/operations/History.h"
#include "devhost/operations/RestartCommand.h"
#include "devhost/preview/FileDifference.h"
#include "devhost/secrets/Masker.h"
#include "devhost/state/StateFolder.h"

namespace devhost {

namespace {

bool AreSame(const DeviceCopy& one, const DeviceCopy& other) {
  return one.settings == other.settings && IsSameFile(one.file, other.file);
}

// Says what the drivers said, and what else is of interest, with the secrets of the change masked.
void Say(const Change& change, const Plan& plan, const std::vector<std::string>& lines, DeviceLife& life, Applied& applied) {
  Masker& masker = life.GetMasker(change.target.showSecrets);
  masker.Xml(change.settings.text);
  masker.Xml(change.target.chosen.device.configXml);
  masker.Xml(plan.before.settings);
  masker.Config(plan.before.file);
  masker.Config(plan.after.file);
  for (const std::string& line : lines) {
    std::string text = masker.Text(line, WrittenBy::Others);
    if (std::find(applied.messages.begin(), applied.messages.end(), text) == applied.messages.end()) {
      applied.messages.push_back(std::move(text));
    }
  }
}

std::string NamesOf(const std::vector<SettingChange>& changes) {
  std::string names;
  for (const SettingChange& change : changes) {
    names += (names.empty() ? "" : ", ") + change.name;
  }
  return names;
}

std::string WasChanged(const Change& change) {
  return change.target.chosen.device.name + " was changed since the plan was made; look at it again";
}

// Whether a change is to be made or a restart is due, as the plan says; else why not is in `applied`.
bool IsAsPlanned(const Change& change, const Plan& plan, const Plan& again, Applied& applied) {
  const std::string& device = change.target.chosen.device.name;
  if (again.verdict == Plan::Verdict::Stop) {
    applied.messages = again.messages;
  } else if (plan.isReachable && !again.isReachable) {
    applied.messages = {device + " could be reached when the plan was made, and cannot be now; look at it again"};
  } else if (!AreSame(again.before, plan.before) || !AreSame(again.after, plan.after)) {
    applied.messages = {WasChanged(change)};
  } else if (again.verdict == Plan::Verdict::Nothing && again.restartDue == 0 && !again.isDueAgain) {
    applied.messages = {"there is nothing to change on " + device};
  } else {
    return true;
  }
  return false;
}

std::vector<std::string> LinesOf(const DeviceLife& life) {
  std::vector<std::string> lines;
  for (const DeviceLife::Heard& heard : life.GetHeard()) {
    lines.push_back(heard.line);
  }
  return lines;
}

// Plans the change once more and lets the agent in, where it is to be made. The file is not read for that when the life has
// read it for the plan: the agent reads it anyway before it sets anything, and when that is another text, the change is
// planned from the beginning. Returns whether all is as planned; else why not is in `applied`.
bool PlanAgain(const Change& change, const Plan& plan, DeviceLife& life, Plan& again, Applied& applied) {
  const DeviceLife::File file{0, plan.before.file};
  bool hasRead = plan.verdict == Plan::Verdict::Change && plan.isReachable && life.HasBegunWith(StateOf(change.target));
  for (;; hasRead = false) {
    again = PlanChange(change, life, hasRead ? &file : nullptr);
    if (!IsAsPlanned(change, plan, again, applied)) {
      return false;
    }
    try {
      using Read = DeviceLife::AgentRead;
      const Read read = again.restartDue != 0 ? Read::Expected : life.LetAgentIn(again.before.file, change.edit);
      if (read == Read::Expected || (read == Read::Nothing && !hasRead)) {
        return true;
      }
      if (!hasRead) {
        applied.messages = {WasChanged(change)};
        return false;
      }
    } catch (const HostError& error) {
      std::vector<std::string> lines = LinesOf(life);
      lines.emplace_back(error.what());
      Say(change, again, lines, life, applied);
      return false;
    }
  }
}

// What has become of a change that was left to the agent.
struct Made {
  bool isKept = false;             // the agent has made it, and the state is kept
  std::vector<std::string> lines;  // what drivers said, and what went wrong
  std::optional<DeviceLife::File> file;
};

// Lets the agent, which is in, change the device, and ends the device's life.
Made Make(const Change& change, StateStore* states, DeviceLife& life) {
  Made made;
  std::string problem;
  try {
    const std::string reply = life.SetDeviceState(change.settings.text, states);
    if (reply == "<Success/>") {
      made.file = life.LookAtFile();
    } else {
      problem = "SetDeviceState answered " + reply;
    }
    life.End();
  } catch (const HostError& error) {
    problem = error.what();
  }
  made.isKept = problem.empty();
  for (const DeviceLife::Heard& heard : life.GetHeard()) {
    made.isKept = made.isKept && heard.kind != Occurrence::Kind::StateProblem;
    made.lines.push_back(heard.line);
  }
  if (!problem.empty()) {
    made.lines.push_back(problem);
  }
  return made;
}

// Looks at the device once more, and keeps in the snapshot what is there now. `file` is what the file of the device is now,
// where that is known. Returns whether the change is in the file.
bool LookAgain(const Change& change, const std::optional<DeviceLife::File>& file, DeviceLife& life,
               SnapshotFolder& snapshots, Applied& applied) {
  try {
    const Plan found = PlanChange(change, life, file && !life.LearnsFromFile() ? &*file : nullptr);
    if (found.verdict == Plan::Verdict::Stop || found.changesFile) {
      applied.messages.insert(applied.messages.end(), found.messages.begin(), found.messages.end());
      applied.messages.push_back("the " + found.file + " is not as it was planned: the same change would change it again");
      return false;
    }
    if (!found.settings.empty()) {
      applied.messages.push_back("the driver does not keep these settings after its end: " + NamesOf(found.settings));
    }
    applied.now = found.before;
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

// What an earlier change has left to be done: the snapshots that say so, or 0.
struct Due {
  explicit Due(const Target& target)
      : restart(RestartDue(target.snapshotFolder, target.chosen.device.id)),
        end(UnfinishedSnapshot(target.snapshotFolder, target.chosen.device.id)) {}

  const unsigned long restart;
  const unsigned long end;
};

// Looks at the device after a change that has failed. One that the driver has refused, and that has changed nothing, leaves
// nothing to be made up for but what was due before it.
void ForgetRefused(const Change& change, const Plan& plan, const Due& before, DeviceLife& life, SnapshotFolder& snapshots,
                   Applied& applied) {
  try {
    const DeviceLook look = LookAtDevice(change.target, life);
    if (!look.isReachable || look.now.file != plan.before.file || look.now.settings != plan.before.settings) {
      return;
    }
    if (before.restart == 0) {
      snapshots.EndRestart(applied.snapshot);
    }
    if (before.end == 0) {
      snapshots.NoteUnchanged(applied.snapshot);
    }
  } catch (const std::exception& error) {
    applied.messages.push_back(std::string("what is there now is not known: ") + error.what());
  }
}

// Has the daemon read its file, now that the change of snapshot `number` is in there. Returns whether it did.
bool Restart(const Change& change, const Plan& plan, unsigned long number, DeviceLife& life, SnapshotFolder& snapshots,
             Applied& applied) {
  const std::string problem = RunRestartCommand(change.restartCommand);
  if (!problem.empty()) {
    Say(change, plan, {"the file is changed, but the restart command has failed: " + problem}, life, applied);
    return false;
  }
  try {
    snapshots.EndRestart(number);
  } catch (const SnapshotError& error) {
    applied.messages.push_back(std::string("the next call will restart again: ") + error.what());
  }
  return true;
}

std::string NotTold(unsigned long number) {
  return "the daemon has not been told of the change of snapshot " + std::to_string(number) +
         ": its restart command has not succeeded; give one again";
}

// Does what is left of an earlier change.
void RestartLate(const Change& change, const Plan& plan, DeviceLife& life, SnapshotFolder& snapshots, Applied& applied) {
  applied.verdict = Applied::Verdict::NotRestarted;
  if (change.restartCommand.empty()) {
    applied.messages = {NotTold(plan.restartDue)};
  } else if (Restart(change, plan, plan.restartDue, life, snapshots, applied)) {
    applied.verdict = Applied::Verdict::Restarted;
    applied.now = plan.before;
    applied.messages.push_back("the restart of the change of snapshot " + std::to_string(plan.restartDue) +
                               " was due, and the restart command was run now");
  }
}

// Makes the change, which is as planned, and has the daemon read its file.
void Carry(const Change& change, const Plan& plan, std::int64_t time, StateStore* states, DeviceLife& life,
           SnapshotFolder& snapshots, Applied& applied) {
  const bool restarts = !change.restartCommand.empty();
  const Due due(change.target);
  // What was there before the first attempt is what an undo is to put back.
  applied.snapshot = plan.isDueAgain ? due.end : 0;
  if (applied.snapshot == 0) {
    applied.snapshot = snapshots.Begin(change.operation, change.target.chosen.device.name, plan.before, time, restarts);
  }
  applied.verdict = Applied::Verdict::Failed;
  const Made made = Make(change, states, life);
  Say(change, plan, made.lines, life, applied);
  if (!made.isKept) {
    ForgetRefused(change, plan, due, life, snapshots, applied);
  } else if (!LookAgain(change, made.file, life, snapshots, applied)) {
    return;
  } else if (!restarts && due.restart != 0) {
    applied.messages.push_back(NotTold(due.restart));
    applied.verdict = applied.verdict == Applied::Verdict::Done ? Applied::Verdict::NotRestarted : applied.verdict;
  } else if (restarts && !Restart(change, plan, applied.snapshot, life, snapshots, applied) &&
             applied.verdict == Applied::Verdict::Done) {
    applied.verdict = Applied::Verdict::NotRestarted;
  }
}

}  // namespace

Applied ApplyChange(const Change& change, const Plan& plan, std::int64_t time) {
  DeviceLife life(change.target.chosen.agent, change.target.chosen.device);
  return ApplyChange(change, plan, time, life);
}

Applied ApplyChange(const Change& shown, const Plan& plan, std::int64_t time, DeviceLife& life) {
  Change change = shown;
  change.wantsDifference = false;  // it is in the plan
  Applied applied;
  const DriverEntry& device = change.target.chosen.device;
  SnapshotFolder snapshots(change.target.snapshotFolder, device.id);
  std::optional<StateFolder> states;
  if (!change.target.stateFolder.empty()) {
    states.emplace(change.target.stateFolder);
  }
  // Both folders are locked now, so this is the state in which the device is changed.
  Plan again;
  if (!PlanAgain(change, plan, life, again, applied)) {
    return applied;
  }
  if (again.restartDue != 0) {
    RestartLate(change, again, life, snapshots, applied);
    return applied;
  }
  Carry(change, again, time, states ? &*states : nullptr, life, snapshots, applied);
  return applied;
}

}  // namespace devhost

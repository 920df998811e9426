#include "devhost/operations/Plan.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "devhost/check/Advice.h"
#include "devhost/check/CheckFile.h"
#include "devhost/operations/IncludedParts.h"
#include "devhost/operations/Overridden.h"
#include "devhost/operations/Rotation.h"
#include "devhost/preview/Preview.h"
#include "devhost/state/StateFolder.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

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
  input.wantsDifference = change.wantsDifference;
  input.state = StateOf(target);
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
void AddOverridden(const std::string& path, bool showSecrets, Plan& plan) {
  const std::string file = plan.changesFile ? plan.file + " after SetDeviceState" : plan.file;
  for (Finding& finding : OverridingLines(plan.after.file, path, file, showSecrets)) {
    finding.severity = Severity::Warning;
    plan.findings.push_back(std::move(finding));
  }
}

// The settings alone may let nobody in where another line of the file does, or of one that it includes.
void RemoveRefuted(const std::string& path, Plan& plan) {
  const auto isNoAccess = [](const Finding& finding) { return finding.rule == "no-access"; };
  CheckMeans means;
  means.circumstances.path = path;
  const std::vector<Finding> ofFile = CheckText(plan.after.file, plan.file, means).findings;
  if (std::none_of(ofFile.begin(), ofFile.end(), isNoAccess)) {
    plan.findings.erase(std::remove_if(plan.findings.begin(), plan.findings.end(), isNoAccess), plan.findings.end());
  }
}

// Judges the settings, and what the file would lose. Returns why that stops the change, or "".
std::string Judge(const Change& change, const PreviewResult& preview, Plan& plan) {
  const std::set<std::string> held = HeldSettings(plan.before.settings);
  const bool showSecrets = change.target.showSecrets;
  plan.findings = Advise(change.settings.text, change.settings.name, showSecrets, &held);
  plan.findings.insert(plan.findings.end(), preview.losses.begin(), preview.losses.end());
  if (auto rotation = JudgeRotation(change, plan.before.file, plan.after.file, plan.file)) {
    plan.findings.push_back(std::move(*rotation));
  }
  const std::string path = PathOf(change.target, plan.before.file);
  RemoveRefuted(path, plan);
  const std::string reason = WhyStopped(change, plan.findings);
  AddOverridden(path, showSecrets, plan);
  if (std::string unread = UnreadParts(plan.after.file, path); !unread.empty()) {
    plan.messages.push_back(std::move(unread));
  }
  return reason;
}

// Compares what the device answers now with what it would answer then.
void Compare(const Change& change, const PreviewInput& input, const PreviewResult& preview, DeviceLife& life, Plan& plan) {
  plan.before = {preview.before.file, EffectiveSettings(input.agent, input.device, preview.before, life.GetHost())};
  plan.after = {preview.after.file, SettingsElement(preview.after, input.device.id)};
  plan.settings = CompareSettings(plan.before.settings, plan.after.settings, life.GetMasker(input.showSecrets));
  std::string reason = Judge(change, preview, plan);
  if (reason.empty() && change.edit && !plan.isReachable) {
    // A text that waits gives way to the next change, which is made from what the device holds then.
    reason = "text below the section is only changed on a device that can be reached; look at it again when it can be";
  }
  const bool keepsSettings = change.target.livesOn || !change.target.stateFolder.empty();
  const bool settingsCount = keepsSettings && !plan.settings.empty();
  const bool changes = plan.changesFile || settingsCount;
  if (!changes) {
    plan.settings.clear();
  }
  if (!reason.empty()) {
    plan.messages.push_back(reason);
  } else {
    plan.verdict = changes ? Plan::Verdict::Change : Plan::Verdict::Nothing;
  }
}

// Whether the driver has kept that it still has to restart the daemon: drivers of drivers/common/DeviceState.h say so in an
// attribute of their state.
bool SaysRestartDue(const std::string& state) {
  if (state.empty()) {
    return false;
  }
  const XmlElement root = ReadXml(state);
  const std::string* const due = root.FindAttribute("restartDue");
  return due != nullptr && *due == "true";
}

// Whether the settings are in the file, and in the device but for its mark of a change that has not come to its end.
bool IsAllThere(const Plan& plan) {
  const bool isMarkOnly = plan.settings.size() == 1 && plan.settings.front().name == "snmpIsConfigDirty";
  return plan.verdict != Plan::Verdict::Stop && plan.isReachable && !plan.changesFile &&
         (plan.settings.empty() || isMarkOnly);
}

// Notes that the daemon may not have read the file, which is as the settings say.
void FindDue(const Change& change, const std::string& state, Plan& plan) {
  const Target& target = change.target;
  const unsigned long id = target.chosen.device.id;
  // The daemon of a file is not started by its driver, so only a restart command tells it of what is in there.
  const unsigned long unfinished = target.file.empty() ? UnfinishedSnapshot(target.snapshotFolder, id) : 0;
  const bool waits = !WaitingChange(target.chosen.device.name, state).empty();
  plan.isDueAgain = unfinished != 0 || waits || SaysRestartDue(state);
  if (!plan.isDueAgain && plan.verdict == Plan::Verdict::Nothing) {
    plan.restartDue = RestartDue(target.snapshotFolder, id);
  }
  if (plan.isDueAgain) {
    plan.verdict = Plan::Verdict::Nothing;
    plan.settings.clear();
    const std::string reason = unfinished != 0
                                   ? "the change of snapshot " + std::to_string(unfinished) + " has not come to its end"
                               : waits ? "its driver has kept a change for later"
                                       : "the driver still has to restart it";
    plan.messages.push_back("the daemon of " + target.chosen.device.name + " may not serve what is in the file: " + reason +
                            "; the change is due again");
  }
}

}  // namespace

std::string FileNameOf(const Target& target) {
  return target.file.empty() ? "snmpd.conf of " + target.chosen.device.name : target.file;
}

std::string StateOf(const Target& target) {
  std::error_code ignored;
  return target.stateFolder.empty() || !std::filesystem::exists(target.stateFolder, ignored)
             ? ""
             : LookIntoStateFolder(target.stateFolder, target.chosen.device.id);
}

Plan PlanChange(const Change& change) {
  DeviceLife life(change.target.chosen.agent, change.target.chosen.device);
  return PlanChange(change, life);
}

Plan PlanChange(const Change& change, DeviceLife& life, const DeviceLife::File* file) {
  Plan plan;
  const PreviewInput input = InputOf(change);
  if (file == nullptr) {
    life.AskUnread(input.state);
  }
  const PreviewResult preview = PreviewChange(input, life, file);
  plan.file = preview.file;
  plan.changesFile = preview.verdict == PreviewResult::Verdict::Changed;
  plan.difference = preview.difference;
  plan.messages = preview.messages;
  plan.isReachable = preview.before.copyStatus != kCannotBeReached;
  if (preview.verdict == PreviewResult::Verdict::Unchanged || preview.verdict == PreviewResult::Verdict::Changed) {
    Compare(change, input, preview, life, plan);
  } else {
    Judge(change, preview, plan);
  }
  if (IsAllThere(plan)) {
    FindDue(change, input.state, plan);
  }
  return plan;
}

}  // namespace devhost

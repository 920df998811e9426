#include "devhost/session/Changes.h"

#include <chrono>
#include <ctime>
#include <exception>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "devhost/json/ChangeObject.h"
#include "devhost/operations/DeviceSettings.h"
#include "devhost/operations/Drift.h"
#include "devhost/operations/History.h"
#include "devhost/operations/Probe.h"
#include "devhost/session/Advising.h"
#include "devhost/session/Devices.h"
#include "devhost/session/LiveLife.h"
#include "devhost/session/RequestError.h"
#include "devhost/session/ShownSettings.h"

namespace devhost {

using nlohmann::json;
using nlohmann::ordered_json;

namespace {

std::set<std::string> AcceptedRules(const json& body) {
  const json& given = Member(body, "accepted");
  std::set<std::string> rules;
  if (!given.is_array()) {
    throw WrongBody("accepted is not a list of rules");
  }
  for (const json& rule : given) {
    if (!rule.is_string()) {
      throw WrongBody("accepted has a rule that is not a text");
    }
    rules.insert(rule.get<std::string>());
  }
  return rules;
}

std::string Joined(const std::vector<std::string>& messages) {
  std::string text;
  for (const std::string& message : messages) {
    text += (text.empty() ? "" : "; ") + message;
  }
  return text;
}

// The members that "devhost apply" prints for a change that has stopped.
void AddStop(const char* stage, const std::string& reason, ordered_json& object) {
  object["stage"] = stage;
  object["reason"] = reason;
}

}  // namespace

Change Changes::ChangeOf(const Request& request) {
  Change change;
  change.target = m_copies.TargetOf(DeviceOf(request));
  const unsigned long id = change.target.chosen.device.id;
  const bool isUndo = request.steps[2] == "undo";
  AllowMembers(request.body, {isUndo ? "snapshot" : "settings", "accepted"});
  if (isUndo) {
    const unsigned long number = NumberMember(request.body, "snapshot");
    if (number == 0) {
      throw BadRequest("snapshot is 0; allowed: the number of a snapshot, from 1 on");
    }
    change = UndoOf(SnapshotOf(ReadSnapshots(change.target.snapshotFolder, id), number), change.target);
  } else {
    const DeviceAnswers now = m_copies.Ask(id);
    const DeviceAnswers merged = MergeEdit(Member(request.body, "settings"), now, m_secrets);
    change.settings = {"settings", SettingsElement(merged, id)};
  }
  change.accepted = AcceptedRules(request.body);
  return change;
}

void Changes::Say(const Change& change, const char* step, const char* state, const std::string& text) {
  m_channel.Event(ordered_json{{"kind", "step"},
                               {"device", change.target.chosen.device.id},
                               {"operation", change.operation},
                               {"step", step},
                               {"state", state},
                               {"text", text}});
}

devhost::Plan Changes::PlanIn(LiveLife& life, const Change& change) {
  devhost::Plan plan = PlanChange(change, life);
  plan.findings = Shown(std::move(plan.findings), m_secrets);
  return plan;
}

ordered_json Changes::Plan(const Change& change) {
  LiveLife life(m_host, change.target.chosen.device.id);
  const devhost::Plan plan = PlanIn(life, change);
  ordered_json object = ChangeObject(change.target.chosen.device.name, plan, nullptr, nullptr, plan.messages);
  if (plan.verdict == devhost::Plan::Verdict::Stop) {
    AddStop("plan", plan.messages.empty() ? "" : plan.messages.back(), object);
  }
  object["base"] = m_copies.BaseOf(change.target.chosen.device.id);
  return object;
}

ordered_json Changes::Preview(const Request& request) {
  return Plan(ChangeOf(request));
}

ordered_json Changes::PreviewUndo(const Request& request) {
  const Change change = ChangeOf(request);
  const SnapshotList list = ReadSnapshots(change.target.snapshotFolder, change.target.chosen.device.id);
  LiveLife life(m_host, change.target.chosen.device.id);
  const devhost::Plan plan = PlanIn(life, change);
  ordered_json object = ChangeObject(change.target.chosen.device.name, plan, nullptr, nullptr, plan.messages);
  if (plan.verdict == devhost::Plan::Verdict::Stop) {
    AddStop("plan", plan.messages.empty() ? "" : plan.messages.back(), object);
  }
  const Snapshot& snapshot = SnapshotOf(list, NumberMember(request.body, "snapshot"));
  object["notPutBack"] = plan.after.settings.empty() ? "" : NotPutBack(snapshot, plan, change.target.showSecrets);
  object["base"] = m_copies.BaseOf(change.target.chosen.device.id);
  return object;
}

ordered_json Changes::Apply(const Request& request) {
  return Make(ChangeOf(request), request);
}

ordered_json Changes::Undo(const Request& request) {
  return Make(ChangeOf(request), request);
}

ordered_json Changes::Make(const Change& change, const Request& request) {
  const std::string& device = change.target.chosen.device.name;
  const unsigned long id = change.target.chosen.device.id;
  m_copies.RequireBase(id, request.ifMatch);
  std::optional<LiveLife> life;
  life.emplace(m_host, id, [&](const char* step, const char* state) { Say(change, step, state); });
  Say(change, "preview", "begun");
  const devhost::Plan plan = PlanIn(*life, change);
  Say(change, "preview", "done");
  const bool isStopped = plan.verdict == devhost::Plan::Verdict::Stop;
  Say(change, "judge", isStopped ? "failed" : "done", plan.messages.empty() ? "" : plan.messages.back());
  if (isStopped || (plan.verdict == devhost::Plan::Verdict::Nothing && !plan.isDueAgain)) {
    ordered_json object = ChangeObject(device, plan, nullptr, nullptr, plan.messages);
    if (isStopped) {
      AddStop("plan", plan.messages.empty() ? "" : plan.messages.back(), object);
    }
    return object;
  }
  const bool answeredBefore = devhost::DoesDaemonAnswer(change.target, MeansFor(change.target), plan.before.file);
  Say(change, "snapshot", "begun");
  const Applied applied = ApplyChange(change, plan, std::time(nullptr), *life);
  life.reset();
  m_host.Daemon(id);
  ProbeReport probe;
  if (applied.verdict == Applied::Verdict::Done) {
    Say(change, "probe", "begun");
    try {
      probe = Probe(change.target, false, answeredBefore);
    } catch (const std::exception& error) {
      // The change is made, whatever becomes of the question.
      probe.messages = {m_secrets.Text(error.what())};
    }
    Say(change, "probe", IsWrong(probe.verdict) ? "failed" : "done", NameOf(probe.verdict));
  }
  std::vector<std::string> messages = plan.messages;
  messages.insert(messages.end(), applied.messages.begin(), applied.messages.end());
  ordered_json object = ChangeObject(device, plan, &applied, &probe, messages);
  if (applied.verdict == Applied::Verdict::Stopped) {
    AddStop("prepare", Joined(applied.messages), object);
  } else if (applied.verdict == Applied::Verdict::Failed) {
    AddStop("change", Joined(applied.messages), object);
  }
  return object;
}

ProbeMeans Changes::MeansFor(const Target& target) {
  ProbeMeans means;
  means.sendsTraps = false;
  means.advice.clear();  // of an option that nobody has here
  // A driver that has chosen the port itself knows it; the project does not.
  const DaemonState daemon = m_host.Daemon(target.chosen.device.id);
  constexpr char kUdp[] = "udp:";
  if (daemon.address.rfind(kUdp, 0) == 0) {
    means.address = daemon.address.substr(sizeof(kUdp) - 1);
  }
  return means;
}

ProbeReport Changes::Probe(const Target& target, bool sendsTraps, bool answeredBefore) {
  LiveLife life(m_host, target.chosen.device.id);
  ProbeMeans means = MeansFor(target);
  means.sendsTraps = sendsTraps;
  const auto begin = std::chrono::steady_clock::now();
  ProbeReport report = ProbeAfterChange(target, means, LookAtDevice(target, life), answeredBefore);
  const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
  if (!report.address.empty()) {
    m_channel.Event(ordered_json{
        {"kind", "probe"}, {"device", target.chosen.device.id}, {"ms", taken.count()}, {"verdict", NameOf(report.verdict)}});
  }
  return report;
}

ordered_json Changes::Effective(const Request& request) {
  const Target target = m_copies.TargetOf(DeviceOf(request));
  return ProbeObject(Probe(target, false));
}

ordered_json Changes::TestTrap(const Request& request) {
  AllowMembers(request.body, {});
  const Target target = m_copies.TargetOf(DeviceOf(request));
  return ProbeObject(Probe(target, true));
}

ordered_json Changes::FindDrift(const Request& request) {
  const Target target = m_copies.TargetOf(DeviceOf(request));
  LiveLife life(m_host, target.chosen.device.id);
  return DriftObject(devhost::FindDrift(target, life), target.chosen.device.name);
}

}  // namespace devhost

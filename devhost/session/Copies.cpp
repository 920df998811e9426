#include "devhost/session/Copies.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>

#include "devhost/check/CheckFile.h"
#include "devhost/check/ConfigText.h"
#include "devhost/check/InstalledDaemon.h"
#include "devhost/json/FindingObject.h"
#include "devhost/json/SnapshotObject.h"
#include "devhost/session/Advising.h"
#include "devhost/session/Devices.h"
#include "devhost/session/RequestError.h"
#include "devhost/session/Session.h"
#include "devhost/session/ShownSettings.h"

namespace devhost {

using nlohmann::ordered_json;

namespace {

// A text that another process will not have.
std::string NewSessionName() {
  std::random_device random;
  return std::to_string(random()) + "." + std::to_string(random());
}

ordered_json SectionOf(const std::string& text) {
  const Layout layout = LayOut(text);
  if (!layout.IsReplaced() || layout.isUtf16) {
    return nullptr;
  }
  return {{"first", std::min(layout.header, layout.firstStart)}, {"last", std::max(layout.trailer, layout.firstEnd)}};
}

// The usual names are those of the installed daemon, which is asked once.
const DirectiveNames* InstalledDirectives() {
  static const std::optional<DirectiveNames> kNames = AskForDirectiveNames();
  return kNames ? &*kNames : nullptr;
}

NamedCopy CopyOf(const Snapshot& snapshot, const std::string& file) {
  return {file + " before snapshot " + std::to_string(snapshot.number), snapshot.before};
}

// A number of a snapshot in a query.
unsigned long SnapshotNumber(const std::string& text) {
  try {
    if (const unsigned long number = NumberOfStep(text); number != 0) {
      return number;
    }
  } catch (const RequestError&) {
    // It is not a number, or too large.
  }
  throw BadRequest("against is neither before, nor now, nor the number of a snapshot");
}

}  // namespace

const Snapshot& SnapshotOf(const SnapshotList& list, unsigned long number) {
  const auto isIt = [number](const auto& each) { return each.number == number; };
  if (std::none_of(list.snapshots.begin(), list.snapshots.end(), isIt) &&
      std::none_of(list.damaged.begin(), list.damaged.end(), isIt)) {
    throw RequestError(404, "no-snapshot", "there is no such snapshot; GET history has those that there are");
  }
  return FindSnapshot(list, number);
}

Copies::Copies(const SessionMeans& means, LiveHost& host, Masker& secrets)
    : m_means(means), m_host(host), m_secrets(secrets), m_session(NewSessionName()) {}

DeviceAnswers Copies::Ask(unsigned long id) {
  DeviceAnswers answers = m_host.Ask(id);
  if (!answers.problem.empty()) {
    throw RequestError(503, "no-answer",
                       "the device does not answer: " + m_secrets.Text(answers.problem, WrittenBy::Others));
  }
  return answers;
}

DeviceAnswers Copies::AskForFile(unsigned long id) {
  DeviceAnswers answers = Ask(id);
  if (const std::string problem = m_host.FileProblem(id); !problem.empty()) {
    throw RequestError(503, "unread-file", "the device does not give its file: " + problem);
  }
  return answers;
}

// A hash would let whoever reads it try communities against it, so it is a number that counts what was seen.
std::string Copies::BaseOf(unsigned long id) {
  const DeviceAnswers answers = m_host.Ask(id);
  const DeviceCopy copy{answers.file, SettingsElement(answers, id)};
  Known& known = m_known[id];
  if (known.revision == 0 || known.copy.file != copy.file || known.copy.settings != copy.settings) {
    ++known.revision;
    known.copy = copy;
  }
  return m_session + "." + std::to_string(known.revision);
}

void Copies::RequireBase(unsigned long id, const std::string& base) {
  if (base.empty()) {
    throw WrongBody("If-Match is missing; allowed: the base that GET of the device or its preview has given");
  }
  const std::string now = BaseOf(id);
  if (base != now) {
    throw StaleBase(now);
  }
}

Target Copies::TargetOf(unsigned long id) {
  Target target;
  const DriverEntry& device = *m_host.Device(id).driver;
  target.chosen = {m_host.RequireAgent(), device};
  target.livesOn = true;  // the host of the session keeps its state
  target.snapshotFolder = m_means.projectFile + ".snapshots";
  target.showSecrets = m_secrets.ShowsSecrets();
  return target;
}

ordered_json Copies::Advise(const Request& request) {
  const DeviceAnswers now = Ask(DeviceOf(request));
  AllowMembers(request.body, {"settings"});
  const DeviceAnswers settings = MergeEdit(Member(request.body, "settings"), now, m_secrets);
  return {{"findings", AdviseOnFields(settings, now, m_secrets)}};
}

ordered_json Copies::File(const Request& request) {
  const DeviceAnswers answers = AskForFile(DeviceOf(request));
  const std::string& text = answers.file;
  const auto feeds = std::count(text.begin(), text.end(), '\n');
  return {{"text", m_secrets.Config(text)},
          {"lines", feeds + (text.empty() || text.back() == '\n' ? 0 : 1)},
          {"section", SectionOf(text)}};
}

ordered_json Copies::Findings(const Request& request) {
  const Target target = TargetOf(DeviceOf(request));
  const DeviceAnswers answers = AskForFile(target.chosen.device.id);
  CheckMeans means;
  means.showSecrets = target.showSecrets;
  means.circumstances.isOff = !answers.isEnabled;
  means.circumstances.directives = InstalledDirectives();
  means.circumstances.path = m_host.FilePath(target.chosen.device.id);
  return {{"findings", FindingObjects(Shown(CheckText(answers.file, FileNameOf(target), means).findings, m_secrets))}};
}

ordered_json Copies::History(const Request& request) {
  const Target target = TargetOf(DeviceOf(request));
  const SnapshotList list = ReadSnapshots(target.snapshotFolder, target.chosen.device.id);
  ordered_json snapshots = ordered_json::array();
  for (const Snapshot& snapshot : list.snapshots) {
    ordered_json object = {{"number", snapshot.number}};
    object.update(SnapshotObject(snapshot, target.showSecrets));
    snapshots.push_back(std::move(object));
  }
  ordered_json damaged = ordered_json::array();
  for (const DamagedSnapshot& each : list.damaged) {
    damaged.push_back({{"number", each.number}, {"problem", m_secrets.Text(each.problem)}});
  }
  return {{"snapshots", std::move(snapshots)}, {"damaged", std::move(damaged)}};
}

NamedCopy Copies::Now(const Target& target) {
  const DeviceAnswers answers = AskForFile(target.chosen.device.id);
  const bool isReachable = answers.copyStatus != kCannotBeReached;
  return {FileNameOf(target) + (isReachable ? " now" : " as it was last known"),
          {answers.file, SettingsElement(answers, target.chosen.device.id)}};
}

ordered_json Copies::Compare(const Request& request) {
  const Target target = TargetOf(DeviceOf(request));
  const std::string file = FileNameOf(target);
  const SnapshotList list = ReadSnapshots(target.snapshotFolder, target.chosen.device.id);
  const unsigned long number = NumberOfStep(request.steps[3]);
  const Snapshot& snapshot = SnapshotOf(list, number);
  const std::string against = request.query.contains("against") ? TextMember(request.query, "against") : "now";
  NamedCopy other;
  if (against == "now") {
    other = Now(target);
  } else if (against != "before") {
    other = CopyOf(SnapshotOf(list, SnapshotNumber(against)), file);
  } else if (snapshot.after) {
    other = {file + " after snapshot " + std::to_string(number), *snapshot.after};
  } else {
    throw RequestError(409, "not-finished",
                       "that change did not finish, so nobody knows what it has left; allowed: now, or a number");
  }
  return DifferenceObject(CompareCopies(CopyOf(snapshot, file), other, target.showSecrets));
}

}  // namespace devhost

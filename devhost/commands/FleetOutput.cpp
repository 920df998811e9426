#include "devhost/commands/FleetOutput.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "devhost/commands/Console.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using nlohmann::ordered_json;
using Kind = FleetResult::Kind;

constexpr char kNotStarted[] = "not-started";

// The objects in what a command has printed; other lines are of drivers, or complaints.
std::vector<ordered_json> ObjectsIn(const std::string& output) {
  std::vector<ordered_json> objects;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    ordered_json object = StartsWith(line, "{") ? ordered_json::parse(line, nullptr, false) : ordered_json();
    if (object.is_object()) {
      objects.push_back(std::move(object));
    }
  }
  return objects;
}

// The last complaint of the command, which masks what it says; "" when there is none.
std::string ComplaintIn(const std::string& output) {
  constexpr char kStart[] = "devhost: ";
  std::string complaint;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    complaint = StartsWith(line, kStart) ? line.substr(sizeof kStart - 1) : complaint;
  }
  return OneLine(complaint);
}

std::string HowItEnded(const FleetEnd& end) {
  if (end.isLate || end.tooLong) {
    return end.isLate ? "it took too long" : "it has printed too much";
  }
  const std::string complaint = ComplaintIn(end.output);
  return !complaint.empty() ? complaint
         : end.signal != 0  ? "its process was ended by signal " + std::to_string(end.signal)
                            : "its process has ended with status " + std::to_string(end.exitStatus) + " and no answer";
}

std::string TextOf(const ordered_json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? OneLine(found->get<std::string>()) : "";
}

std::string Written(const ordered_json& value) {
  return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

// "" when there is none.
std::string LastMessageIn(const ordered_json& object) {
  const ordered_json messages = object.value("messages", ordered_json::array());
  return messages.is_array() && !messages.empty() && messages.back().is_string()
             ? OneLine(messages.back().get<std::string>())
             : "";
}

// How a daemon that was asked after a change differs, or that it has gone; "" when it is as configured, or was not asked.
std::string DifferenceIn(const ordered_json& object) {
  std::string names;
  const ordered_json probe = object.value("probe", ordered_json::object());
  const auto items = probe.find("items");
  if (items != probe.end() && items->is_array()) {
    for (const ordered_json& item : *items) {
      names += TextOf(item, "verdict") == "differs" ? (names.empty() ? "" : ", ") + TextOf(item, "name") : "";
    }
  }
  if (TextOf(probe, "verdict") == "gone") {
    return LastMessageIn(probe);
  }
  return names.empty() ? "" : "the daemon differs: " + names;
}

// What the object says of a device in one line. Of a rotation that was only looked at, that is whether it is open.
std::string ReasonIn(const ordered_json& object) {
  const auto open = object.find("open");
  if (open == object.end() || !open->is_boolean()) {
    const std::string reason = TextOf(object, "reason");
    return reason.empty() ? DifferenceIn(object) : reason;
  }
  const std::string message = LastMessageIn(object);
  return std::string(open->get<bool>() ? "a rotation is open" : "no rotation is open") +
         (message.empty() ? "" : "; " + message);
}

bool HasEndedByItself(const FleetEnd& end) {
  return !end.isLate && !end.tooLong && end.signal == 0;
}

// The verdict of one command as a report on many devices shows it, where nobody sees which command it was.
std::string ShownVerdict(const FleetOperation& operation, const std::string& verdict) {
  return operation.name == "preview" && verdict == "changed" ? "would-change"
         : operation.name == "drift" && verdict == "none"    ? "no-drift"
                                                             : verdict;
}

FleetResult Failed(const FleetEnd& end) {
  FleetResult result;
  result.kind = Kind::Failed;
  result.verdict = "failed";
  result.reason = HowItEnded(end);
  return result;
}

// "devhost check" prints an object for each finding, and none where there is none.
FleetResult JudgeCheck(const FleetEnd& end) {
  if (!HasEndedByItself(end) || end.exitStatus > 1) {
    return Failed(end);
  }
  const std::vector<ordered_json> findings = ObjectsIn(end.output);
  FleetResult result;
  result.kind = end.exitStatus == 0 ? Kind::Good : Kind::Differs;
  result.verdict = end.exitStatus == 0 ? "clean" : "findings";
  result.reason = findings.empty() ? "" : Counted(findings.size(), "finding");
  result.answer = Written(findings);
  return result;
}

const char* NameOfSignal(int signal) {
  const char* const name = ::sigabbrev_np(signal);
  return name == nullptr ? "" : name;
}

}  // namespace

FleetResult JudgeFleetEnd(const FleetOperation& operation, const FleetEnd& end) {
  if (operation.name == "check") {
    return JudgeCheck(end);
  }
  const std::vector<ordered_json> objects = ObjectsIn(end.output);
  const std::string verdict = objects.empty() ? "" : TextOf(objects.back(), "verdict");
  if (!HasEndedByItself(end) || verdict.empty()) {
    return Failed(end);
  }
  FleetResult result;
  result.kind = end.exitStatus == 0 ? Kind::Good : end.exitStatus == 1 && !operation.changes ? Kind::Differs : Kind::Failed;
  result.verdict = ShownVerdict(operation, verdict);
  result.reason = ReasonIn(objects.back());
  result.answer = Written(objects.back());
  return result;
}

ExitStatus FleetStatus(const FleetOperation& operation, const std::vector<FleetResult>& results) {
  ExitStatus status = ExitStatus::Good;
  for (const FleetResult& result : results) {
    const ExitStatus own = result.kind == Kind::Good                           ? ExitStatus::Good
                           : result.kind == Kind::Differs || operation.changes ? ExitStatus::Failed
                                                                               : ExitStatus::Wrong;
    status = std::max(status, own);
  }
  return status;
}

FleetOutput::FleetOutput(const std::vector<FleetDevice>& devices, bool json, Console& console)
    : m_devices(devices), m_json(json), m_console(console), m_showsProgress(::isatty(console.Errors().Descriptor()) == 1) {}

void FleetOutput::Tell(std::size_t number, std::size_t wave, const FleetResult& result) {
  ++m_counts[result.verdict];
  ++m_done;
  if (m_json) {
    TellJson(number, wave, result);
  }
  ShowProgress(std::to_string(m_done) + " of " + std::to_string(m_devices.size()) + ", wave " + std::to_string(wave) + ": " +
               OneLine(m_devices[number].name) + " " + result.verdict);
}

void FleetOutput::TellJson(std::size_t number, std::size_t wave, const FleetResult& result) {
  const FleetDevice& device = m_devices[number];
  ordered_json object = {{"project", device.project},
                         {"device", device.name},
                         {"id", device.id},
                         {"wave", wave == 0 ? ordered_json() : ordered_json(wave)},
                         {"verdict", result.verdict},
                         {"reason", result.reason},
                         {"milliseconds", result.time.count()}};
  object["answer"] = result.answer.empty() ? ordered_json() : ordered_json::parse(result.answer, nullptr, false);
  m_console.Out().Write(Written(object) + "\n");
}

// Each text replaces the one before; "" only takes that away.
void FleetOutput::ShowProgress(const std::string& text) {
  if (m_showsProgress) {
    m_console.Errors().Write("\r\x1b[K" + text);
  }
}

void FleetOutput::Report(const FleetOutcome& outcome) {
  ShowProgress("");
  for (std::size_t i = 0; i != outcome.results.size(); ++i) {
    if (outcome.results[i].kind == Kind::NotStarted) {
      ++m_counts[kNotStarted];
      FleetResult result;
      result.verdict = kNotStarted;
      m_json ? TellJson(i, 0, result) : void();
    }
  }
  if (m_json) {
    const ordered_json object = {{"devices", m_devices.size()},
                                 {"verdicts", m_counts},
                                 {"signal", outcome.signal == 0 ? ordered_json() : ordered_json(outcome.signal)}};
    m_console.Out().Write(Written(object) + "\n");
    return;
  }
  PrintTable(outcome.results);
  std::string counts;
  for (const auto& [verdict, count] : m_counts) {
    counts += (counts.empty() ? "" : ", ") + std::to_string(count) + " " + verdict;
  }
  m_console.Out().Write(Counted(m_devices.size(), "device") + ": " + counts + "\n");
  if (outcome.signal != 0) {
    m_console.Complain(std::string("ended by SIG") + NameOfSignal(outcome.signal) + " before all devices had their turn");
  }
}

void FleetOutput::PrintTable(const std::vector<FleetResult>& results) {
  std::size_t widest = 0;
  std::size_t widestVerdict = 0;
  std::vector<std::string> names;
  names.reserve(results.size());
  for (std::size_t i = 0; i != results.size(); ++i) {
    names.push_back(OneLine(m_devices[i].project + " " + m_devices[i].name));
    widest = std::max(widest, names.back().size());
    widestVerdict = std::max(widestVerdict, results[i].verdict.size());
  }
  widestVerdict = std::max(widestVerdict, sizeof kNotStarted - 1);
  for (std::size_t i = 0; i != results.size(); ++i) {
    const std::string verdict = results[i].kind == Kind::NotStarted ? kNotStarted : results[i].verdict;
    std::string line = names[i] + std::string(widest + 2 - names[i].size(), ' ') + verdict;
    if (!results[i].reason.empty()) {
      line += std::string(widestVerdict + 2 - verdict.size(), ' ') + results[i].reason;
    }
    m_console.Out().Write(line + "\n");
  }
}

}  // namespace devhost

#include "devhost/commands/ChangeOutput.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <exception>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <utility>

#include "devhost/commands/Console.h"
#include "devhost/commands/DeviceOptions.h"
#include "devhost/commands/Findings.h"
#include "devhost/commands/ProbeOutput.h"
#include "devhost/engine/EndWatch.h"
#include "devhost/json/ChangeObject.h"
#include "devhost/operations/History.h"
#include "devhost/operations/RestartCommand.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using nlohmann::ordered_json;

bool IsOnTerminal(Console& console) {
  return ::isatty(STDIN_FILENO) == 1 && ::isatty(console.Out().Descriptor()) == 1;
}

// Nothing but a whole "y" or "yes" is one.
bool Ask(const std::string& device, Console& console) {
  console.Out().Write("Change " + OneLine(device) + " like this? [y/N] ");
  std::string answer;
  char letter = 0;
  while (::read(STDIN_FILENO, &letter, 1) == 1 && letter != '\n') {
    answer += letter;
  }
  return answer == "y" || answer == "yes";
}

ExitStatus StatusOf(const Plan& plan) {
  switch (plan.verdict) {
    case Plan::Verdict::Nothing:
      return plan.isDueAgain || plan.restartDue != 0 ? ExitStatus::Failed : ExitStatus::Good;
    case Plan::Verdict::Change:
      return ExitStatus::Failed;
    case Plan::Verdict::Stop:
      break;
  }
  return ExitStatus::Wrong;
}

ExitStatus StatusOf(Applied::Verdict verdict) {
  switch (verdict) {
    case Applied::Verdict::Done:
    case Applied::Verdict::Waits:
    case Applied::Verdict::Restarted:
      return ExitStatus::Good;
    case Applied::Verdict::Stopped:
      return ExitStatus::Wrong;
    case Applied::Verdict::NotRestarted:
    case Applied::Verdict::Failed:
      break;
  }
  return ExitStatus::Failed;
}

// A change that has stopped or failed, and where.
struct Stop {
  Stage stage;
  std::string reason;
};

// The daemon of the device, which is asked before and after a change. That of a file without a project reads it at a restart
// only.
class ProbedDaemon {
 public:
  ProbedDaemon(const Change& change, const Plan& plan, const Arguments& arguments)
      : m_target(change.target),
        m_isAsked(!arguments.Has(kNoProbe) && (m_target.file.empty() || !change.restartCommand.empty())) {
    m_means.address = arguments.Text(kAddress);
    m_means.sendsTraps = false;
    m_answered = m_isAsked && DoesDaemonAnswer(m_target, m_means, plan.before.file);
  }

  // What it serves; no address where it was not to be asked.
  ProbeReport AskAfter(const Applied& applied, const ProbeMore& probeMore) const {
    ProbeReport report;
    const bool isDone = applied.verdict == Applied::Verdict::Done || applied.verdict == Applied::Verdict::Restarted;
    if (!m_isAsked || !isDone) {
      return report;
    }
    try {
      DeviceLook look;
      look.now = applied.now;
      report = ProbeAfterChange(m_target, m_means, look, m_answered);
      if (probeMore && !report.items.empty()) {
        probeMore(report);
      }
    } catch (const std::exception& error) {
      report.messages = {error.what()};
    }
    return report;
  }

 private:
  const Target& m_target;
  const bool m_isAsked;
  ProbeMeans m_means;
  bool m_answered = false;
};

void PrintProbe(const ProbeReport& report, const std::string& device, Console& console) {
  if (!report.items.empty()) {
    console.Out().Write(ShortProbeText(report, device));
  } else if (report.verdict == ProbeReport::Verdict::Gone) {
    console.Complain(report.messages.back());
  } else if (!report.address.empty()) {
    console.Out().Write("not probed: " + OneLine(report.messages.back()) + "\n");
  }
}

// `applied`, `probe` and `stop` may be null.
void PrintJson(const std::string& device, const Plan& plan, const Applied* applied, const ProbeReport* probe,
               const Stop* stop, const std::vector<std::string>& messages, Output& out) {
  ordered_json object = ChangeObject(device, plan, applied, probe, messages);
  if (stop != nullptr) {
    object["stage"] = NameOf(stop->stage);
    object["reason"] = stop->reason;
  }
  PrintObject(object, out);
}

// Where a change that is not made, or not whole, has stopped.
Stage StageOf(Applied::Verdict verdict) {
  return verdict == Applied::Verdict::Stopped        ? Stage::Prepare
         : verdict == Applied::Verdict::NotRestarted ? Stage::Restart
                                                     : Stage::Change;
}

void PrintPlan(const Plan& plan, bool withDifference, Console& console) {
  for (const Finding& finding : plan.findings) {
    console.Out().Write(FindingText(finding));
  }
  if (withDifference) {
    console.Out().Write(plan.difference);
  }
  console.Out().Write(SettingLines(plan.settings));
}

void PrintLines(const std::vector<std::string>& lines, bool areErrors, Console& console) {
  for (const std::string& line : lines) {
    areErrors ? console.Complain(line) : console.Out().Write(OneLine(line) + "\n");
  }
}

std::string SummaryOf(const Plan& plan, const std::string& device) {
  if (plan.verdict == Plan::Verdict::Nothing && !plan.isDueAgain) {
    return "nothing to change on " + device;
  }
  return plan.isDueAgain     ? "the " + plan.file + " would be written again"
         : !plan.changesFile ? "settings of " + device + " would change; its snmpd.conf would be written again"
                             : "the " + plan.file + " would change";
}

std::string SummaryOf(const Applied& applied, const std::string& device) {
  const std::string kept = "; snapshot " + std::to_string(applied.snapshot) + " has what was there before";
  const bool onlyRestarts =
      applied.verdict == Applied::Verdict::Restarted || applied.verdict == Applied::Verdict::NotRestarted;
  return onlyRestarts && applied.snapshot == 0               ? "nothing to change on " + device
         : applied.verdict == Applied::Verdict::Done         ? device + " is changed" + kept
         : applied.verdict == Applied::Verdict::Waits        ? device + " gets the change when it is back" + kept
         : applied.verdict == Applied::Verdict::NotRestarted ? device + " is changed" + kept
         : applied.snapshot == 0                             ? "nothing was changed"
                                                             : "the change of " + device + " has failed" + kept;
}

ExitStatus Decline(Console& console) {
  console.Complain("not confirmed: nothing was changed");
  return ExitStatus::Wrong;
}

}  // namespace

std::set<std::string> AcceptedRules(const Arguments& arguments) {
  const std::string text = arguments.Text(kAccept);
  std::set<std::string> rules;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    rules.insert(text.substr(at, end - at));
    at = end + 1;
  }
  return rules;
}

std::vector<std::string> RestartWords(const Arguments& arguments) {
  std::vector<std::string> words = SplitWords(arguments.Text(kRestart));
  if (arguments.Has(kRestart) && words.empty()) {
    throw std::runtime_error("--restart-command is empty; allowed: a program and its arguments");
  }
  if (const std::string reason = words.empty() ? "" : WhyNotRunnable(words); !reason.empty()) {
    throw std::runtime_error("--restart-command: " + reason + "; allowed: a program that is there");
  }
  return words;
}

const char* NameOf(Stage stage) {
  constexpr const char* kNames[] = {"input", "plan", "prepare", "change", "restart"};
  return kNames[static_cast<int>(stage)];
}

void RequireAnswer(const Arguments& arguments, Console& console) {
  if (!arguments.Has(kYes) && !arguments.Has(kDryRun) && (arguments.Has(kChangeJson) || !IsOnTerminal(console))) {
    throw std::runtime_error(
        "nobody can be asked whether to make the change; allowed: --yes, --dry-run, or a terminal without --json");
  }
}

ExitStatus MakeChange(const Change& change, const Remarks& remarks, const Arguments& arguments, Console& console,
                      Stage& stage, const ProbeMore& probeMore) {
  const bool json = arguments.Has(kChangeJson);
  const bool asks = !arguments.Has(kYes) && !arguments.Has(kDryRun);
  const std::string device = OneLine(change.target.chosen.device.name);
  stage = Stage::Plan;
  std::optional<DeviceLife> life(std::in_place, change.target.chosen.agent, change.target.chosen.device);
  const Plan plan = PlanChange(change, *life);
  const bool restartsLate = (plan.restartDue != 0 || plan.isDueAgain) && !arguments.Has(kDryRun);
  std::vector<std::string> messages = remarks(plan);
  if (plan.restartDue != 0 && !restartsLate) {
    messages.push_back("the restart of the change of snapshot " + std::to_string(plan.restartDue) + " is due");
  }
  if (!json) {
    PrintPlan(plan, asks || arguments.Has(kDiff), console);
    PrintLines(messages, false, console);
    PrintLines(plan.messages, plan.verdict == Plan::Verdict::Stop, console);
  }
  messages.insert(messages.end(), plan.messages.begin(), plan.messages.end());
  if (!restartsLate && (plan.verdict != Plan::Verdict::Change || arguments.Has(kDryRun))) {
    if (json) {
      const Stop stop{Stage::Plan, Joined(plan.messages)};
      PrintJson(change.target.chosen.device.name, plan, nullptr, nullptr,
                plan.verdict == Plan::Verdict::Stop ? &stop : nullptr, messages, console.Out());
    } else if (plan.verdict != Plan::Verdict::Stop) {
      console.Out().Write(SummaryOf(plan, device) + "\n");
    }
    return StatusOf(plan);
  }
  const bool acts = plan.verdict == Plan::Verdict::Change || plan.isDueAgain || !change.restartCommand.empty();
  if (asks && acts && !Ask(device, console)) {
    return Decline(console);
  }
  const ProbedDaemon daemon(change, plan, arguments);
  // A driver that ends the process may leave the device changed from here on.
  EndWatch::SetExitStatus(static_cast<int>(ExitStatus::Failed));
  stage = Stage::Prepare;
  const Applied applied = ApplyChange(change, plan, std::time(nullptr), *life);
  life.reset();
  const ExitStatus made = StatusOf(applied.verdict);
  const bool failed = made != ExitStatus::Good;
  const ProbeReport probe = daemon.AskAfter(applied, probeMore);
  const ExitStatus status = IsWrong(probe.verdict) ? ExitStatus::Failed : made;
  if (json) {
    messages.insert(messages.end(), applied.messages.begin(), applied.messages.end());
    const Stop stop{StageOf(applied.verdict), Joined(applied.messages)};
    PrintJson(change.target.chosen.device.name, plan, &applied, &probe, failed ? &stop : nullptr, messages, console.Out());
    return status;
  }
  PrintLines(applied.messages, failed, console);
  PrintLines({SummaryOf(applied, device)}, failed, console);
  PrintProbe(probe, device, console);
  return status;
}

ExitStatus GuardStops(const Arguments& arguments, Console& console, const PrintStop& printStop,
                      const std::function<ExitStatus(Stage&)>& run) {
  EndWatch::SetExitStatus(static_cast<int>(ExitStatus::Wrong));
  Stage stage = Stage::Input;
  std::string reason;
  try {
    const ExitStatus status = run(stage);
    return console.Out().Error() == 0 ? status : std::max(status, ExitStatus::Failed);
  } catch (const std::bad_alloc&) {
    reason = "out of memory";
  } catch (const std::exception& error) {
    reason = error.what();
  }
  console.Complain(reason);
  if (arguments.Has(kChangeJson)) {
    printStop(stage, reason);
  }
  return ExitStatus::Wrong;
}

PrintStop PrintStopOfChange(const std::string& name, Console& console) {
  return [name, &console](Stage stage, const std::string& reason) {
    const Stop stop{stage, reason};
    PrintJson(name, Plan(), nullptr, nullptr, &stop, {reason}, console.Out());
  };
}

std::string Joined(const std::vector<std::string>& messages) {
  std::string text;
  for (const std::string& message : messages) {
    text += (text.empty() ? "" : "; ") + message;
  }
  return text;
}

void PrintObject(const ordered_json& object, Output& out) {
  out.Write(object.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

std::string SettingLines(const std::vector<SettingChange>& settings) {
  std::string lines;
  for (const SettingChange& setting : settings) {
    lines += setting.name + ": " + Quoted(setting.before) + " -> " + Quoted(setting.after) + "\n";
  }
  return lines;
}

}  // namespace devhost

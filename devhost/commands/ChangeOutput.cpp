#include "devhost/commands/ChangeOutput.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <exception>
#include <new>
#include <nlohmann/json.hpp>

#include "devhost/commands/Console.h"
#include "devhost/commands/Findings.h"
#include "devhost/engine/EndWatch.h"
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

// What has become of a change, for people and for programs.
struct Outcome {
  const char* verdict;
  ExitStatus status;
};

Outcome OutcomeOf(Plan::Verdict verdict) {
  switch (verdict) {
    case Plan::Verdict::Nothing:
      return {"unchanged", ExitStatus::Good};
    case Plan::Verdict::Change:
      return {"would-change", ExitStatus::Failed};
    case Plan::Verdict::Stop:
      break;
  }
  return {"stopped", ExitStatus::Wrong};
}

Outcome OutcomeOf(Applied::Verdict verdict) {
  switch (verdict) {
    case Applied::Verdict::Done:
      return {"changed", ExitStatus::Good};
    case Applied::Verdict::Waits:
      return {"waits", ExitStatus::Good};
    case Applied::Verdict::Stopped:
      return {"stopped", ExitStatus::Wrong};
    case Applied::Verdict::Failed:
      break;
  }
  return {"failed", ExitStatus::Failed};
}

void PrintJson(const Change& change, const Plan& plan, const Applied* applied, const std::vector<std::string>& messages,
               Output& out) {
  ordered_json findings = ordered_json::array();
  for (const Finding& finding : plan.findings) {
    findings.push_back(FindingObject(finding));
  }
  const bool isKept = applied != nullptr && applied->snapshot != 0;
  const ordered_json object = {
      {"device", change.target.chosen.device.name},
      {"verdict", (applied == nullptr ? OutcomeOf(plan.verdict) : OutcomeOf(applied->verdict)).verdict},
      {"changed", isKept},
      {"snapshot", isKept ? ordered_json(applied->snapshot) : ordered_json()},
      {"difference", plan.difference},
      {"settings", SettingObjects(plan.settings)},
      {"findings", findings},
      {"messages", messages}};
  out.Write(object.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n");
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
  if (plan.verdict == Plan::Verdict::Nothing) {
    return "nothing to change on " + device;
  }
  return plan.difference.empty() ? "settings of " + device + " would change; its snmpd.conf would be written again"
                                 : "the " + plan.file + " would change";
}

std::string SummaryOf(const Applied& applied, const std::string& device) {
  const std::string kept = "; snapshot " + std::to_string(applied.snapshot) + " has what was there before";
  return applied.verdict == Applied::Verdict::Done    ? device + " is changed" + kept
         : applied.verdict == Applied::Verdict::Waits ? device + " gets the change when it is back" + kept
         : applied.snapshot == 0                      ? "nothing was changed"
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

bool MayGoOn(const Arguments& arguments, Console& console) {
  if (arguments.Has(kYes) || arguments.Has(kDryRun) || (!arguments.Has(kChangeJson) && IsOnTerminal(console))) {
    return true;
  }
  console.Complain(
      "nobody can be asked whether to make the change; allowed: --yes, --dry-run, or a terminal without --json");
  return false;
}

ExitStatus MakeChange(const Change& change, const Remarks& remarks, const Arguments& arguments, Console& console) {
  const bool json = arguments.Has(kChangeJson);
  const bool asks = !arguments.Has(kYes) && !arguments.Has(kDryRun);
  const std::string device = OneLine(change.target.chosen.device.name);
  const Plan plan = PlanChange(change);
  std::vector<std::string> messages = remarks(plan);
  if (!json) {
    PrintPlan(plan, asks || arguments.Has(kDiff), console);
    PrintLines(messages, false, console);
    PrintLines(plan.messages, plan.verdict == Plan::Verdict::Stop, console);
  }
  messages.insert(messages.end(), plan.messages.begin(), plan.messages.end());
  if (plan.verdict != Plan::Verdict::Change || arguments.Has(kDryRun)) {
    if (json) {
      PrintJson(change, plan, nullptr, messages, console.Out());
    } else if (plan.verdict != Plan::Verdict::Stop) {
      console.Out().Write(SummaryOf(plan, device) + "\n");
    }
    return OutcomeOf(plan.verdict).status;
  }
  if (asks && !Ask(device, console)) {
    return Decline(console);
  }
  // A driver that ends the process may leave the device changed from here on.
  EndWatch::SetExitStatus(static_cast<int>(ExitStatus::Failed));
  const Applied applied = ApplyChange(change, plan, std::time(nullptr));
  const Outcome outcome = OutcomeOf(applied.verdict);
  if (json) {
    messages.insert(messages.end(), applied.messages.begin(), applied.messages.end());
    PrintJson(change, plan, &applied, messages, console.Out());
    return outcome.status;
  }
  const bool failed = outcome.status != ExitStatus::Good;
  PrintLines(applied.messages, failed, console);
  PrintLines({SummaryOf(applied, device)}, failed, console);
  return outcome.status;
}

ExitStatus GuardChange(Console& console, const std::function<ExitStatus()>& run) {
  EndWatch::SetExitStatus(static_cast<int>(ExitStatus::Wrong));
  try {
    const ExitStatus status = run();
    return console.Out().Error() == 0 ? status : std::max(status, ExitStatus::Failed);
  } catch (const std::bad_alloc&) {
    console.Complain("out of memory");
  } catch (const std::exception& error) {
    console.Complain(error.what());
  }
  return ExitStatus::Wrong;
}

ordered_json SettingObjects(const std::vector<SettingChange>& settings) {
  ordered_json objects = ordered_json::array();
  for (const SettingChange& setting : settings) {
    objects.push_back({{"name", setting.name}, {"before", setting.before}, {"after", setting.after}});
  }
  return objects;
}

std::string SettingLines(const std::vector<SettingChange>& settings) {
  std::string lines;
  for (const SettingChange& setting : settings) {
    lines += setting.name + ": " + Quoted(setting.before) + " -> " + Quoted(setting.after) + "\n";
  }
  return lines;
}

}  // namespace devhost

#include "devhost/conform/Conform.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/ConformReport.h"
#include "devhost/engine/EndWatch.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kModule{"module", "", "The file of the driver's module", Takes::Path};
const CommandOption kProfile{"--profile", "FILE", "The driver's configuration, what it claims, and what is waived",
                             Takes::Path};
const CommandOption kLevel{"--level",     "LEVEL", "How much is judged: basic (the default) or full",
                           Takes::Choice, false,   {"basic", "full"}};
// Checks and groups behind the last comma of the word.
std::vector<Candidate> SuggestOnly(const Arguments&, const std::string& word) {
  const std::string before = word.substr(0, word.rfind(',') + 1);
  std::vector<Candidate> checks;
  for (const Check& check : Checks()) {
    const std::string group = before + GroupOf(check);
    if (checks.empty() ||
        std::none_of(checks.begin(), checks.end(), [&](const Candidate& known) { return known.text == group; })) {
      checks.push_back({group, "all checks of this group"});
    }
    checks.push_back({before + check.id, check.sentence});
  }
  return checks;
}

std::vector<Candidate> SuggestChecks(const Arguments&, const std::string&) {
  std::vector<Candidate> checks;
  for (const Check& check : Checks()) {
    checks.push_back({check.id, check.sentence});
  }
  return checks;
}

const CommandOption kOnly =
    With({"--only", "LIST", "Make only these checks: ids or groups, with commas between them", Takes::Text}, &SuggestOnly);
const CommandOption kSeed{"--seed", "NUMBER", "Where random texts begin (default: another number each time)", Takes::Text};
const CommandOption kDuration{"--duration", "SECONDS", "How long random sessions are tried (default: 20)", Takes::Text};
const CommandOption kRunner{"--runner", "COMMAND", "Start each check by this command: a memory checker, or an emulator",
                            Takes::Text};
const CommandOption kFormat{"--format",    "FORMAT", "Print the report as text (the default), json or junit",
                            Takes::Choice, false,    {"text", "json", "junit"}};
const CommandOption kOutput{"--output", "FILE", "Write the report into this file, and print the text, too", Takes::Path};
const CommandOption kStrict{"--strict", "", "Let warnings fail, too"};
const CommandOption kInProcess{"--in-process", "", "Make the checks in this process, for a debugger"};
const CommandOption kList{"--list", "", "Print all checks, a line each, and make none"};
const CommandOption kExplain =
    With({"--explain", "ID", "Say why there is this check, and make none", Takes::Text}, &SuggestChecks);
const CommandOption kRunCheck = [] {
  CommandOption option{"--run-check", "ID", "Make one check in this folder, for the process that waits", Takes::Text};
  option.isHidden = true;
  return option;
}();

constexpr char kFooter[] =
    "Judges the driver of an SNMP-capable device by its contract: host/ISupportSNMP.h and the\n"
    "other headers of the host. Each check is made in a process of its own, with an agent\n"
    "double that calls the device and records what the device calls. A check of severity\n"
    "contract fails; one of severity practice only warns. Actions on the controller are called\n"
    "only when the profile claims safe-actions. A process keeps crashes apart, not malice: do\n"
    "not give this command modules that you do not trust.\n"
    "\n"
    "The profile, where each part may be missing; {folder} is an empty folder for each device:\n"
    "\n"
    "  <conform>\n"
    "    <config folder=\"{folder}\"/>\n"
    "    <claim name=\"keeps-state\"/>\n"
    "    <waive check=\"traps-many\" reason=\"the controller holds 10\"/>\n"
    "  </conform>\n"
    "\n"
    "Exit status: 0 it conforms, perhaps with waivers or warnings; 1 it does not; 2 wrong usage,\n"
    "or nobody can tell: a check could not be made, or only some were.\n"
    "\n"
    "Example: judge a driver.\n"
    "\n"
    "  devhost conform kettle.so";

// What is asked for is wrong: what, and what is allowed.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

const Check& GetCheck(const std::string& id) {
  const Check* const check = FindCheck(id);
  if (check == nullptr) {
    throw UsageError("there is no check " + Quoted(id) + "; allowed: an id that devhost conform --list prints");
  }
  return *check;
}

std::string SeverityOf(const Check& check) {
  return check.severity == Severity::Contract ? "contract" : "practice";
}

std::string LevelOf(const Check& check) {
  return check.level == Level::Basic ? "basic" : "full";
}

void PrintList(Output& out) {
  for (const Check& check : Checks()) {
    out.Write(std::string(check.id) + " (" + LevelOf(check) + ", " + SeverityOf(check) +
              (*check.claim == '\0' ? "" : std::string(", claim ") + check.claim) + "): " + check.sentence + "\n");
  }
}

void Explain(const Check& check, Output& out) {
  out.Write(std::string(check.id) + ": " + check.sentence + "\n\n" + check.explanation + "\n\nLevel " + LevelOf(check) +
            ", severity " + SeverityOf(check) +
            (*check.claim == '\0' ? "" : std::string(", made only for profiles that claim ") + check.claim) + ".\n");
}

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> parts;
  std::size_t at = 0;
  while (at <= text.size()) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

// In the order of the table. A check that is named is made, whatever its level is.
std::vector<const Check*> ChosenChecks(const Arguments& arguments) {
  const std::vector<std::string> only =
      arguments.Has(kOnly) ? SplitAtCommas(arguments.Text(kOnly)) : std::vector<std::string>();
  const bool isFull = arguments.Text(kLevel) == "full";
  std::vector<const Check*> chosen;
  std::vector<bool> isUsed(only.size(), false);
  for (const Check& check : Checks()) {
    bool isChosen = only.empty() && (isFull || check.level == Level::Basic);
    for (std::size_t i = 0; i != only.size(); ++i) {
      const bool matches = only[i] == check.id || only[i] == GroupOf(check);
      isUsed[i] = isUsed[i] || matches;
      isChosen = isChosen || matches;
    }
    if (isChosen) {
      chosen.push_back(&check);
    }
  }
  const auto unused = std::find(isUsed.begin(), isUsed.end(), false);
  if (unused != isUsed.end()) {
    GetCheck(only[static_cast<std::size_t>(unused - isUsed.begin())]);
  }
  return chosen;
}

unsigned long Number(const std::string& text, const std::string& name) {
  if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos) {
    throw UsageError("the " + name + " is " + Quoted(text) + "; allowed: a number of at most 9 digits");
  }
  return std::stoul(text);
}

Conformance ReadConformance(const Arguments& arguments, const std::string& seed) {
  if (!arguments.Has(kModule)) {
    throw UsageError("the argument \"module\" is missing; allowed: devhost conform [options] module");
  }
  Conformance conformance;
  conformance.module = std::filesystem::absolute(arguments.Text(kModule)).string();
  const std::string problem = WhyNoRegularFile(conformance.module);
  if (!problem.empty()) {
    throw FileError(arguments.Text(kModule), problem);
  }
  conformance.agent = PathIn(ModuleFolder(arguments), "snmp_configuration_agent.so");
  conformance.program = std::filesystem::read_symlink("/proc/self/exe").string();
  conformance.seed = std::stoul(seed);
  if (arguments.Has(kDuration)) {
    conformance.sessionTime = std::chrono::seconds(Number(arguments.Text(kDuration), "duration"));
  }
  if (arguments.Has(kRunner)) {
    conformance.runner = SplitWords(arguments.Text(kRunner));
    // Checks are made in folders of their own.
    if (!conformance.runner.empty() && conformance.runner.front().find('/') != std::string::npos) {
      conformance.runner.front() = std::filesystem::absolute(conformance.runner.front()).string();
    }
  }
  if (arguments.Has(kProfile)) {
    conformance.profile = ReadProfile(ReadNamedText(arguments.Text(kProfile)));
    conformance.profileFile = std::filesystem::absolute(arguments.Text(kProfile)).string();
  }
  return conformance;
}

ExitStatus StatusOf(const ConformRun& run, const std::vector<Outcome>& outcomes, bool isStrict) {
  const bool hasWarning = std::any_of(outcomes.begin(), outcomes.end(),
                                      [](const Outcome& outcome) { return outcome.status == Outcome::Status::Warn; });
  return run.verdict == Verdict::DoesNotConform || (isStrict && hasWarning) ? ExitStatus::Failed
         : run.verdict == Verdict::Incomplete                               ? ExitStatus::Wrong
                                                                            : ExitStatus::Good;
}

// The report in that format, whole.
std::string ReportText(const std::string& format, const std::vector<Outcome>& outcomes, const ConformRun& run) {
  if (format != "text") {
    return format == "json" ? ConformJson(outcomes, run) : ConformJUnit(outcomes, run);
  }
  std::string text;
  for (const Outcome& outcome : outcomes) {
    text += OutcomeText(outcome, run);
  }
  return text + VerdictText(outcomes, run);
}

void WriteReport(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + Quoted(path));
  }
}

ExitStatus Judge(const Arguments& arguments, Console& console) {
  ConformRun run;
  run.module = arguments.Text(kModule);
  run.seed = std::to_string(arguments.Has(kSeed) ? Number(arguments.Text(kSeed), "seed") : std::random_device()() % 1000000);
  run.level = arguments.Has(kLevel) ? arguments.Text(kLevel) : "basic";
  for (const CommandOption* const option : {&kProfile, &kModuleFolder, &kDuration, &kRunner}) {
    run.options += arguments.Has(*option) ? std::string(option->name) + " " + AsWord(arguments.Text(*option)) + " " : "";
  }
  const Conformance conformance = ReadConformance(arguments, run.seed);
  if (arguments.Has(kRunCheck)) {
    RunCheckHere(conformance, GetCheck(arguments.Text(kRunCheck)));
    return ExitStatus::Good;
  }
  DescribeModule(conformance.module, run);
  const std::string format = arguments.Has(kFormat) ? arguments.Text(kFormat) : "text";
  const bool printsText = format == "text" || arguments.Has(kOutput);
  const auto tell = [&](const Outcome& outcome) { console.Out().Write(printsText ? OutcomeText(outcome, run) : ""); };
  const std::vector<const Check*> checks = ChosenChecks(arguments);
  std::vector<Outcome> outcomes;
  if (arguments.Has(kInProcess)) {
    for (const Check* const check : checks) {
      outcomes.push_back(RunCheckInProcess(conformance, *check));
      tell(outcomes.back());
    }
  } else {
    outcomes = RunChecks(conformance, checks, tell);
  }
  run.verdict = VerdictOf(outcomes, !arguments.Has(kOnly));
  console.Out().Write(printsText ? VerdictText(outcomes, run) : ReportText(format, outcomes, run));
  if (arguments.Has(kOutput)) {
    WriteReport(arguments.Text(kOutput), ReportText(format, outcomes, run));
  }
  return StatusOf(run, outcomes, arguments.Has(kStrict));
}

ExitStatus Conform(const Arguments& arguments, Console& console) {
  EndWatch::SetExitStatus(static_cast<int>(ExitStatus::Wrong));
  try {
    if (arguments.Has(kList)) {
      PrintList(console.Out());
    } else if (arguments.Has(kExplain)) {
      Explain(GetCheck(arguments.Text(kExplain)), console.Out());
    } else {
      return Judge(arguments, console);
    }
    return ExitStatus::Good;
  } catch (const std::exception& error) {
    console.Complain(error.what());
  }
  return ExitStatus::Wrong;
}

}  // namespace

Command MakeConform() {
  return {"conform",
          "Judge the driver of a device by its contract",
          {kModule, kProfile, kModuleFolder, kLevel, kOnly, kSeed, kDuration, kRunner, kFormat, kOutput, kStrict, kInProcess,
           kList, kExplain, kRunCheck},
          kFooter,
          &Conform};
}

}  // namespace devhost

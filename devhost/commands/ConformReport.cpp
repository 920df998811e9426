#include "devhost/commands/ConformReport.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "devhost/driver/DriverModule.h"
#include "devhost/driver/ModuleNote.h"
#include "devhost/system/FileText.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Status = Outcome::Status;

constexpr std::size_t kStatusWidth = 10;
constexpr std::size_t kMostLogLines = 10;

bool IsFinding(const Outcome& outcome) {
  return outcome.status == Status::Fail || outcome.status == Status::Crash || outcome.status == Status::Hang ||
         outcome.status == Status::Warn;
}

std::string Replay(const Outcome& outcome, const ConformRun& run) {
  return "devhost conform " + run.options + "--only " + outcome.check->id + " --seed " + run.seed + " " + AsWord(run.module);
}

std::string Problem(const Outcome& outcome) {
  const std::string slot = outcome.slot.empty() ? "" : " (" + outcome.slot + ")";
  const std::string waiver = outcome.waiver.empty() ? "" : "; waived: " + outcome.waiver;
  return OneLine(outcome.message + slot + waiver);
}

// How many there are of each status, in the order of the statuses.
std::vector<std::pair<std::string, std::size_t>> Tally(const std::vector<Outcome>& outcomes) {
  std::map<Status, std::size_t> counts;
  for (const Outcome& outcome : outcomes) {
    ++counts[outcome.status];
  }
  std::vector<std::pair<std::string, std::size_t>> tally;
  tally.reserve(counts.size());
  for (const auto& [status, count] : counts) {
    tally.emplace_back(NameOf(status), count);
  }
  return tally;
}

// A line for each reason, since many checks build on one thing.
std::string UnjudgedText(const std::vector<Outcome>& outcomes) {
  std::vector<std::pair<std::string, std::vector<std::string>>> checks;  // by what is said
  for (const Outcome& outcome : outcomes) {
    if (outcome.status == Status::Unjudged) {
      const std::string problem = Problem(outcome);
      auto group = std::find_if(checks.begin(), checks.end(), [&](const auto& each) { return each.first == problem; });
      if (group == checks.end()) {
        group = checks.insert(group, {problem, {}});
      }
      group->second.emplace_back(outcome.check->id);
    }
  }
  std::string text;
  for (const auto& [problem, ids] : checks) {
    std::string status = NameOf(Status::Unjudged);
    status.resize(kStatusWidth, ' ');
    const std::string who = ids.size() == 1 ? ids.front() : Counted(ids.size(), "check");
    text.append(status).append(who).append(": ").append(problem).append("\n");
  }
  return text;
}

// What JUnit makes of a status: the name of the element for it, "" for a test that has passed.
std::string JUnitName(Status status) {
  switch (status) {
    case Status::Pass:
      return "";
    case Status::Fail:
    case Status::Crash:
    case Status::Hang:
      return "failure";
    case Status::Broken:
    case Status::Unjudged:
      return "error";
    default:
      return "skipped";
  }
}

XmlElement TestCase(const Outcome& outcome, const ConformRun& run) {
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%ld.%03ld", outcome.milliseconds / 1000, outcome.milliseconds % 1000);
  XmlElement test;
  test.name = "testcase";
  test.attributes = {{"classname", GroupOf(*outcome.check)}, {"name", outcome.check->id}, {"time", seconds}};
  XmlElement problem;
  problem.name = JUnitName(outcome.status);
  if (problem.name.empty()) {
    return test;
  }
  problem.attributes = {{"message", NameOf(outcome.status) + (": " + Problem(outcome))}};
  problem.text = problem.name == "failure" ? std::string(outcome.check->sentence) + "\n" + Replay(outcome, run) : "";
  test.children.push_back(problem);
  return test;
}

XmlElement TestSuite(const std::string& group, const std::vector<Outcome>& outcomes, const ConformRun& run) {
  XmlElement suite;
  suite.name = "testsuite";
  std::map<std::string, std::size_t> counts;
  for (const Outcome& outcome : outcomes) {
    if (GroupOf(*outcome.check) == group) {
      suite.children.push_back(TestCase(outcome, run));
      ++counts[JUnitName(outcome.status)];
    }
  }
  suite.attributes = {{"name", group},
                      {"tests", std::to_string(suite.children.size())},
                      {"failures", std::to_string(counts["failure"])},
                      {"errors", std::to_string(counts["error"])},
                      {"skipped", std::to_string(counts["skipped"])}};
  return suite;
}

// Of the file, as the program sha256sum prints it; "" where that is not installed.
std::string Sha256Of(const std::string& path) {
  const std::string program = FindProgram("sha256sum");
  if (program.empty()) {
    return "";
  }
  ProgramRun run;
  run.words = {program, "--", path};
  const ProgramResult result = RunProgram(run);
  // A backslash in front says that the name stands there in another form.
  return result.exitStatus == 0 ? result.output.substr(result.output.find_first_not_of('\\'), 64) : "";
}

}  // namespace

void DescribeModule(const std::string& path, ConformRun& run) {
  run.sha256 = Sha256Of(path);
  try {
    const ModuleNote note = ReadModuleNote(ReadRegularFile(path), path);
    run.version = note.version;
    run.contract = note.contract;
  } catch (const ModuleError&) {
    // It was not built with the kit.
  }
}

std::string OutcomeText(const Outcome& outcome, const ConformRun& run) {
  std::string status = NameOf(outcome.status);
  status.resize(kStatusWidth, ' ');
  const std::string indent(kStatusWidth, ' ');
  if (outcome.status == Status::Unjudged) {
    return "";
  }
  if (outcome.status == Status::Pass) {
    return status + outcome.check->id + "\n";
  }
  std::string text = status + outcome.check->id + ": " + Problem(outcome) + "\n";
  if (!IsFinding(outcome)) {
    return text;
  }
  text += indent + outcome.check->sentence + "\n";
  const std::size_t hidden = outcome.log.size() > kMostLogLines ? outcome.log.size() - kMostLogLines : 0;
  for (std::size_t i = hidden; i != outcome.log.size(); ++i) {
    text += indent + "| " + outcome.log[i] + "\n";
  }
  text += outcome.script.empty() ? "" : indent + "a script for devhost run:\n" + outcome.script;
  return text + indent + "why:   devhost conform --explain " + outcome.check->id + "\n" + indent +
         "again: " + Replay(outcome, run) + "\n";
}

std::string VerdictText(const std::vector<Outcome>& outcomes, const ConformRun& run) {
  std::string counts;
  for (const auto& [status, count] : Tally(outcomes)) {
    counts += (counts.empty() ? "" : ", ") + std::to_string(count) + " " + status;
  }
  return UnjudgedText(outcomes) + NameOf(run.verdict) + ": " + counts + " (level " + run.level + ", seed " + run.seed +
         ")\n";
}

std::string ConformJson(const std::vector<Outcome>& outcomes, const ConformRun& run) {
  using Json = nlohmann::ordered_json;
  Json tally = Json::object();
  for (const auto& [status, count] : Tally(outcomes)) {
    tally[status] = count;
  }
  Json checks = Json::array();
  for (const Outcome& outcome : outcomes) {
    checks.push_back({{"id", outcome.check->id},
                      {"group", GroupOf(*outcome.check)},
                      {"severity", outcome.check->severity == Severity::Contract ? "contract" : "practice"},
                      {"status", NameOf(outcome.status)},
                      {"operation", outcome.slot},
                      {"message", outcome.message},
                      {"waiver", outcome.waiver},
                      {"ms", outcome.milliseconds},
                      {"replay", Replay(outcome, run)},
                      {"log", outcome.log},
                      {"script", outcome.script}});
  }
  const Json object = {{"format", 1},
                       {"module", run.module},
                       {"sha256", run.sha256},
                       {"version", run.version},
                       {"contract", run.contract},
                       {"seed", run.seed},
                       {"level", run.level},
                       {"verdict", NameOf(run.verdict)},
                       {"tally", tally},
                       {"checks", checks}};
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string ConformJUnit(const std::vector<Outcome>& outcomes, const ConformRun& run) {
  XmlElement suites;
  suites.name = "testsuites";
  suites.attributes = {{"name", "devhost conform " + run.module}};
  std::string last;
  for (const Outcome& outcome : outcomes) {
    const std::string group = GroupOf(*outcome.check);
    if (group != last) {
      suites.children.push_back(TestSuite(group, outcomes, run));
    }
    last = group;
  }
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + XmlText(suites, XmlStyle::Indented) + "\n";
}

}  // namespace devhost

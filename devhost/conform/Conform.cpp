#include "devhost/conform/Conform.h"

#include <sys/resource.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>

#include "devhost/conform/PrivateFolder.h"
#include "devhost/conform/Trial.h"
#include "devhost/secrets/Masker.h"
#include "devhost/system/FileText.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Clock = std::chrono::steady_clock;
using Status = Outcome::Status;

constexpr char kResult[] = "/result";
constexpr char kSlot[] = "/slot";
// What a driver has said is shown in reports, but not all of what one says that never ends.
constexpr std::size_t kMostOfALine = 1000;
constexpr std::size_t kMostLines = 100;
// What the other checks build on, in this order.
const std::vector<std::string> kFoundations = {"module-needs", "module-loads", "life-initialize"};
// What is judged of a module that cannot be loaded.
const std::set<std::string> kOfTheFile = {"module-needs", "module-loads", "module-exports"};

// The text of a file that a check may have left; "" for none.
std::string ReadLeft(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

void SetLimit(int which, rlim_t most) {
  rlimit limit = {};
  ::getrlimit(static_cast<__rlimit_resource>(which), &limit);
  limit.rlim_cur = std::min(most, limit.rlim_max);
  ::setrlimit(static_cast<__rlimit_resource>(which), &limit);
}

Outcome Judge(const Conformance& conformance, const Check& check, const std::string& folder) {
  Outcome outcome;
  outcome.check = &check;
  Trial trial(conformance.module, folder, conformance.profile, conformance.seed);
  trial.agent = conformance.agent;
  trial.sessionTime = conformance.sessionTime;
  try {
    check.judge(trial);
  } catch (const Violation& violation) {
    outcome.status = Status::Fail;
    outcome.message = violation.what();
    outcome.slot = violation.slot.empty() ? trial.trail.Last() : violation.slot;
    outcome.script = trial.script;
  } catch (const Blocked& blocked) {
    outcome.status = Status::Unjudged;
    outcome.message = blocked.what();
  } catch (const std::exception& error) {
    outcome.status = Status::Broken;
    outcome.message = error.what();
  }
  return outcome;
}

std::string ResultText(const Outcome& outcome) {
  XmlElement result;
  result.name = "result";
  result.attributes = {{"status", NameOf(outcome.status)}, {"slot", outcome.slot}, {"message", OneLine(outcome.message)}};
  result.text = outcome.script;
  return XmlText(result, XmlStyle::Compact);
}

// False when the process has left none, or not all of it.
bool ReadResult(const std::string& text, Outcome& outcome) {
  try {
    const XmlElement result = ReadXml(text);
    for (const Status status : {Status::Pass, Status::Fail, Status::Unjudged, Status::Broken}) {
      if (*result.FindAttribute("status") == NameOf(status)) {
        outcome.status = status;
        outcome.slot = *result.FindAttribute("slot");
        outcome.message = *result.FindAttribute("message");
        outcome.script = result.text;
        return true;
      }
    }
  } catch (const XmlError&) {
    // The process has ended before that.
  }
  return false;
}

// Both ends of a text that is too long.
std::string Shortened(const std::string& text) {
  constexpr std::size_t kEnd = 200;
  if (text.size() <= kMostOfALine) {
    return text;
  }
  const std::size_t left = text.size() - kMostOfALine;
  return text.substr(0, kMostOfALine - kEnd) + " ... (" + std::to_string(left) + " bytes) ... " +
         text.substr(text.size() - kEnd);
}

// The last lines of what was printed.
std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(OneLine(line));
  }
  if (lines.size() > kMostLines) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(kMostLines));
  }
  return lines;
}

std::string Seconds(std::chrono::milliseconds time) {
  return Counted(static_cast<std::size_t>(time.count() / 1000), "second");
}

// A process that was killed: because of one call, or because of all together.
void ExplainLate(const Conformance& conformance, const Trail::LastCall& call, Outcome& outcome) {
  outcome.slot = call.slot;
  if (call.age >= conformance.deadline) {
    outcome.status = Status::Hang;
    outcome.message = (call.slot.empty() ? "the check" : "the call") + (" has not come back for " + Seconds(call.age));
    return;
  }
  // Calls that come back, however late, keep the contract.
  outcome.status = Status::Unjudged;
  outcome.slot.clear();
  outcome.message = "the check was not over after " + Seconds(conformance.longest) +
                    (call.slot.empty() ? "" : "; the last call was " + call.slot);
}

// How a process ended by itself that has left no result.
void Explain(const ProgramResult& run, const Trail::LastCall& call, Outcome& outcome) {
  outcome.slot = call.slot;
  outcome.status = Status::Crash;
  outcome.message = run.tooLong       ? "the driver has printed more than 16 MiB"
                    : run.signal != 0 ? "the process was ended by signal " + std::to_string(run.signal)
                                      : "the process has ended with status " + std::to_string(run.exitStatus);
  // The host says who it was.
  for (const std::string& line : outcome.log) {
    outcome.message = StartsWith(line, "devhost: the process") ? line.substr(9) : outcome.message;
  }
}

ProgramRun RunOf(const Conformance& conformance, const Check& check, const std::string& folder) {
  ProgramRun run;
  run.words = conformance.runner;
  run.words.insert(run.words.end(), {conformance.program, "conform", "--run-check", check.id, "--module-dir",
                                     FolderOf(conformance.agent), "--seed", std::to_string(conformance.seed), "--duration",
                                     std::to_string(conformance.sessionTime.count() / 1000)});
  if (!conformance.profileFile.empty()) {
    run.words.insert(run.words.end(), {"--profile", conformance.profileFile});
  }
  run.words.push_back(conformance.module);
  run.folder = folder;
  run.deadline = conformance.longest + (GroupOf(check) == "fuzz" ? conformance.sessionTime : std::chrono::milliseconds());
  run.isLate = [&conformance, folder] { return Trail::Read(folder + kSlot).age >= conformance.deadline; };
  return run;
}

Outcome RunInChild(const Conformance& conformance, const Check& check, const std::string& folder) {
  std::filesystem::create_directory(folder);
  Outcome outcome;
  outcome.check = &check;
  try {
    const ProgramResult result = RunProgram(RunOf(conformance, check, folder));
    const Trail::LastCall call = Trail::Read(folder + kSlot);
    outcome.log = LinesOf(result.output);
    if (result.late) {
      ExplainLate(conformance, call, outcome);
    } else if (!ReadResult(ReadLeft(folder + kResult), outcome)) {
      Explain(result, call, outcome);
    }
  } catch (const ProgramError& error) {
    outcome.status = Status::Broken;
    outcome.message = error.what();
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  return outcome;
}

// As waivers write it; the clock of Greenwich ends them everywhere on one day.
std::string Today() {
  const std::time_t now = std::time(nullptr);
  std::tm time = {};
  ::gmtime_r(&now, &time);
  char text[16];
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d", &time));
}

// What the profile makes of an outcome, and nobody may read in it.
void Finish(const Profile& profile, Outcome& outcome) {
  // What cannot be judged may be waived together with the reason for that.
  const bool isFinding = outcome.status == Status::Fail || outcome.status == Status::Crash ||
                         outcome.status == Status::Hang || outcome.status == Status::Unjudged;
  const auto waiver = profile.waivers.find(outcome.check->id);
  const bool isWaived = isFinding && waiver != profile.waivers.end();
  if (isWaived && (waiver->second.until.empty() || Today() <= waiver->second.until)) {
    outcome.status = Status::Waived;
    outcome.waiver = waiver->second.reason;
  } else if (outcome.status == Status::Fail && outcome.check->severity == Severity::Practice) {
    outcome.status = Status::Warn;
  }
  if (isWaived && outcome.status != Status::Waived) {
    outcome.message += "; it was waived until " + waiver->second.until;
  }
  Masker masker(false);
  masker.Xml(profile.config);
  // A secret that is cut would not be found any more.
  outcome.message = Shortened(masker.Text(outcome.message));
  for (std::string& line : outcome.log) {
    line = Shortened(masker.Text(line, WrittenBy::Others));
  }
}

// Whether the profile claims what the check is about.
bool IsClaimed(const Conformance& conformance, const Check& check) {
  return *check.claim == '\0' || conformance.profile.claims.count(check.claim) != 0;
}

Outcome Skipped(const Check& check) {
  Outcome outcome;
  outcome.check = &check;
  outcome.status = Status::Skip;
  outcome.message = std::string("the profile does not claim ") + check.claim;
  return outcome;
}

// The checks that others build on, then the others.
std::vector<const Check*> FoundationsFirst(std::vector<const Check*> checks) {
  auto first = checks.begin();
  for (const std::string& id : kFoundations) {
    const auto found = std::find_if(first, checks.end(), [&id](const Check* check) { return check->id == id; });
    if (found != checks.end()) {
      std::rotate(first, found, found + 1);
      ++first;
    }
  }
  return checks;
}

// Why the checks behind this one cannot be made, "" when they can.
std::string WhyNoneAfter(const Outcome& outcome) {
  const std::string id = outcome.check->id;
  if (id == kFoundations.back()) {
    const bool isDown = outcome.status == Status::Crash || outcome.status == Status::Hang;
    return isDown ? "no driver can be initialised: see " + id : "";
  }
  const bool isFoundation = std::find(kFoundations.begin(), kFoundations.end(), id) != kFoundations.end();
  return isFoundation && outcome.status != Status::Pass ? "the module does not load: see " + id : "";
}

}  // namespace

std::vector<Outcome> RunChecks(const Conformance& conformance, const std::vector<const Check*>& checks,
                               const std::function<void(const Outcome&)>& tell) {
  const PrivateFolder folder;
  std::vector<Outcome> outcomes;
  std::string whyNone;
  for (const Check* const check : FoundationsFirst(checks)) {
    const Clock::time_point start = Clock::now();
    if (!IsClaimed(conformance, *check)) {
      outcomes.push_back(Skipped(*check));
    } else if (whyNone.empty() || kOfTheFile.count(check->id) != 0) {
      outcomes.push_back(RunInChild(conformance, *check, folder.Path() + "/" + check->id));
      whyNone = whyNone.empty() ? WhyNoneAfter(outcomes.back()) : whyNone;
      Finish(conformance.profile, outcomes.back());
    } else {
      outcomes.push_back({check, Status::Unjudged, "", whyNone, "", {}});
    }
    Outcome& outcome = outcomes.back();
    outcome.milliseconds =
        static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
    tell(outcome);
  }
  std::sort(outcomes.begin(), outcomes.end(), [](const Outcome& left, const Outcome& right) {
    return left.check < right.check;  // as in the table
  });
  return outcomes;
}

Outcome RunCheckInProcess(const Conformance& conformance, const Check& check) {
  if (!IsClaimed(conformance, check)) {
    return Skipped(check);
  }
  const PrivateFolder folder;
  Outcome outcome = Judge(conformance, check, folder.Path());
  Finish(conformance.profile, outcome);
  return outcome;
}

void RunCheckHere(const Conformance& conformance, const Check& check) {
  SetLimit(RLIMIT_CORE, 0);
  SetLimit(RLIMIT_NOFILE, 256);
  SetLimit(RLIMIT_FSIZE, rlim_t{256} * 1024 * 1024);
  // A driver may go to another folder.
  const std::string folder = std::filesystem::current_path().string();
  const Outcome outcome = Judge(conformance, check, folder);
  std::ofstream(folder + kResult, std::ios::binary) << ResultText(outcome);
}

}  // namespace devhost

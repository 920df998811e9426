#include "devhost/conform/Conform.h"

#include <stdlib.h>
#include <sys/resource.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>

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

constexpr char kResult[] = "result";
// Without these a module makes no driver.
const std::set<std::string> kNeededToLoad = {"module-needs", "module-loads"};

// A folder for one check, gone at the end with all that the driver has put there.
class PrivateFolder {
 public:
  PrivateFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "devhost-conform-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), "cannot make the folder " + name);
    }
    m_path = name;
  }
  ~PrivateFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::string& Path() const { return m_path; }
  // The text of a file that a check may have left there; "" for none.
  std::string Read(const char* name) const {
    std::ostringstream text;
    text << std::ifstream(m_path + "/" + name, std::ios::binary).rdbuf();
    return text.str();
  }

 private:
  std::string m_path;
};

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

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(OneLine(line));
  }
  return lines;
}

// How a process ended that has left no result.
void Explain(const ProgramResult& run, const PrivateFolder& folder, Outcome& outcome) {
  const std::string slot = folder.Read("slot");
  outcome.slot = slot.substr(0, slot.find('\n'));
  outcome.status = run.late ? Status::Hang : Status::Crash;
  if (run.late) {
    outcome.message = "the call did not come back in time";
    return;
  }
  outcome.message = run.tooLong       ? "the driver has printed more than 16 MiB"
                    : run.signal != 0 ? "the process was ended by signal " + std::to_string(run.signal)
                                      : "the process has ended with status " + std::to_string(run.exitStatus);
  // The host says who it was.
  for (const std::string& line : outcome.log) {
    outcome.message = StartsWith(line, "devhost: the process") ? line.substr(9) : outcome.message;
  }
}

Outcome RunInChild(const Conformance& conformance, const Check& check) {
  const PrivateFolder folder;
  ProgramRun run;
  run.words = {conformance.program, "conform", "--run-check", check.id, "--module-dir", FolderOf(conformance.agent)};
  run.words.insert(run.words.end(), {"--seed", std::to_string(conformance.seed)});
  run.words.insert(run.words.end(), {"--duration", std::to_string(conformance.sessionTime.count() / 1000)});
  if (!conformance.profileFile.empty()) {
    run.words.insert(run.words.end(), {"--profile", conformance.profileFile});
  }
  run.words.push_back(conformance.module);
  run.folder = folder.Path();
  run.deadline = conformance.deadline + conformance.sessionTime;
  Outcome outcome;
  outcome.check = &check;
  try {
    const ProgramResult result = RunProgram(run);
    outcome.log = LinesOf(result.output);
    if (!ReadResult(folder.Read(kResult), outcome)) {
      Explain(result, folder, outcome);
    }
  } catch (const ProgramError& error) {
    outcome.status = Status::Broken;
    outcome.message = error.what();
  }
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
  const bool isFinding = outcome.status == Status::Fail || outcome.status == Status::Crash || outcome.status == Status::Hang;
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
  outcome.message = masker.Text(outcome.message);
  for (std::string& line : outcome.log) {
    line = masker.Text(line, WrittenBy::Others);
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

}  // namespace

std::vector<Outcome> RunChecks(const Conformance& conformance, const std::vector<const Check*>& checks,
                               const std::function<void(const Outcome&)>& tell) {
  std::vector<Outcome> outcomes;
  std::string notLoaded;  // the check that says why the module does not load
  for (const Check* const check : checks) {
    const Clock::time_point start = Clock::now();
    if (!IsClaimed(conformance, *check)) {
      outcomes.push_back(Skipped(*check));
    } else if (notLoaded.empty() || GroupOf(*check) == "module") {
      outcomes.push_back(RunInChild(conformance, *check));
      Finish(conformance.profile, outcomes.back());
    } else {
      outcomes.push_back({check, Status::Unjudged, "", "the module does not load: see " + notLoaded, "", {}});
    }
    Outcome& outcome = outcomes.back();
    if (notLoaded.empty() && outcome.status != Status::Pass && kNeededToLoad.count(check->id) != 0) {
      notLoaded = check->id;
    }
    outcome.milliseconds =
        static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
    tell(outcome);
  }
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
  const Outcome outcome = Judge(conformance, check, std::filesystem::current_path().string());
  std::ofstream(kResult, std::ios::binary) << ResultText(outcome);
}

}  // namespace devhost

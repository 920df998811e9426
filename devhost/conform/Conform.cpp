#include "devhost/conform/Conform.h"

#include <sys/resource.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <set>

#include "devhost/conform/CheckProcess.h"
#include "devhost/conform/Trial.h"
#include "devhost/secrets/Masker.h"
#include "devhost/system/PrivateFolder.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Clock = std::chrono::steady_clock;
using Status = Outcome::Status;

constexpr std::size_t kMostOfALine = 1000;  // of what a driver has said
// What the other checks build on, in this order.
const std::vector<std::string> kFoundations = {"module-needs", "module-loads", "life-initialize"};
// What is judged of a module that cannot be loaded.
const std::set<std::string> kOfTheFile = {"module-needs", "module-loads", "module-exports"};

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
      outcomes.push_back(RunCheckProcess(conformance, *check, folder.Path() + "/" + check->id));
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
  LeaveOutcome(Judge(conformance, check, folder), folder);
}

}  // namespace devhost

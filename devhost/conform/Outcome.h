#ifndef DEVHOST_CONFORM_OUTCOME_H
#define DEVHOST_CONFORM_OUTCOME_H

#include <string>
#include <vector>

#include "devhost/conform/Check.h"

namespace devhost {

// What came of one check.
struct Outcome {
  enum class Status {
    Pass,
    Fail,
    Crash,     // the process ended, by a signal or otherwise, before the check did
    Hang,      // it was killed at its deadline
    Warn,      // it failed at something that is practice only
    Skip,      // the profile does not claim what it judges
    Waived,    // it failed, and the profile has a reason for that
    Unjudged,  // the driver fails at what this check builds on
    Broken     // the machine did not allow it: says nothing about the driver
  };

  const Check* check = nullptr;
  Status status = Status::Pass;
  std::string slot;              // the operation that is to blame, or that was called last; "" for none
  std::string message;           // what went wrong, in one line; "" for Pass
  std::string waiver;            // the reason of Waived
  std::vector<std::string> log;  // what host and driver have printed meanwhile
  long milliseconds = 0;
  std::string script = {};  // for devhost run, that does what went wrong; "" for none
};

// The word for it in reports: "pass", "fail", ...
const char* NameOf(Outcome::Status status);

// What all outcomes say together.
enum class Verdict { Conforms, ConformsWithWaivers, DoesNotConform, Incomplete };

// `isAll`: all checks of a level were made, not some that were picked. A driver does not conform when it fails, crashes or
// hangs anywhere; otherwise a check that could not be made leaves the verdict open.
Verdict VerdictOf(const std::vector<Outcome>& outcomes, bool isAll);

// "conforms", "conforms with waivers", ...
const char* NameOf(Verdict verdict);

}  // namespace devhost

#endif

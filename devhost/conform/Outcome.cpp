#include "devhost/conform/Outcome.h"

#include <algorithm>

namespace devhost {

const char* NameOf(Outcome::Status status) {
  using Status = Outcome::Status;
  switch (status) {
    case Status::Pass:
      return "pass";
    case Status::Fail:
      return "fail";
    case Status::Crash:
      return "crash";
    case Status::Hang:
      return "hang";
    case Status::Warn:
      return "warn";
    case Status::Skip:
      return "skip";
    case Status::Waived:
      return "waived";
    case Status::Unjudged:
      return "unjudged";
    case Status::Broken:
      return "broken";
  }
  return "";
}

Verdict VerdictOf(const std::vector<Outcome>& outcomes, bool isAll) {
  using Status = Outcome::Status;
  const auto has = [&outcomes](std::initializer_list<Status> some) {
    return std::any_of(outcomes.begin(), outcomes.end(), [&some](const Outcome& outcome) {
      return std::find(some.begin(), some.end(), outcome.status) != some.end();
    });
  };
  return has({Status::Fail, Status::Crash, Status::Hang})    ? Verdict::DoesNotConform
         : !isAll || has({Status::Unjudged, Status::Broken}) ? Verdict::Incomplete
         : has({Status::Waived})                             ? Verdict::ConformsWithWaivers
                                                             : Verdict::Conforms;
}

const char* NameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::Conforms:
      return "conforms";
    case Verdict::ConformsWithWaivers:
      return "conforms with waivers";
    case Verdict::DoesNotConform:
      return "does not conform";
    case Verdict::Incomplete:
      return "incomplete";
  }
  return "";
}

}  // namespace devhost

#include "devhost/conform/Outcome.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

using Status = Outcome::Status;

Verdict Of(std::initializer_list<Status> statuses, bool isAll = true) {
  std::vector<Outcome> outcomes;
  for (const Status status : statuses) {
    outcomes.emplace_back();
    outcomes.back().status = status;
  }
  return VerdictOf(outcomes, isAll);
}

TEST(AVerdict, IsGoodWithWarningsAndWithoutClaims) {
  EXPECT_EQ(Of({Status::Pass, Status::Warn, Status::Skip}), Verdict::Conforms);
}

TEST(AVerdict, NamesWaivers) {
  EXPECT_EQ(Of({Status::Pass, Status::Waived}), Verdict::ConformsWithWaivers);
}

TEST(AVerdict, IsBadWithOneFailureCrashOrHangWhateverElseThereIs) {
  EXPECT_EQ(Of({Status::Pass, Status::Fail, Status::Broken}), Verdict::DoesNotConform);
  EXPECT_EQ(Of({Status::Crash}), Verdict::DoesNotConform);
  EXPECT_EQ(Of({Status::Hang}, false), Verdict::DoesNotConform);
}

TEST(AVerdict, StaysOpenWhenACheckCouldNotBeMade) {
  EXPECT_EQ(Of({Status::Pass, Status::Broken}), Verdict::Incomplete);
  EXPECT_EQ(Of({Status::Pass, Status::Unjudged}), Verdict::Incomplete);
}

TEST(AVerdict, StaysOpenWhenSomeChecksWerePicked) {
  EXPECT_EQ(Of({Status::Pass}, false), Verdict::Incomplete);
}

TEST(AVerdict, HasWords) {
  EXPECT_STREQ(NameOf(Verdict::Conforms), "conforms");
  EXPECT_STREQ(NameOf(Verdict::ConformsWithWaivers), "conforms with waivers");
  EXPECT_STREQ(NameOf(Verdict::DoesNotConform), "does not conform");
  EXPECT_STREQ(NameOf(Verdict::Incomplete), "incomplete");
}

}  // namespace
}  // namespace devhost

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <string>

#include "devhost/conform/Check.h"
#include "devhost/conform/Profile.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

TEST(TheChecks, HaveIdsOfTheirOwnWithAGroupInFront) {
  std::set<std::string> ids;
  for (const Check& check : Checks()) {
    EXPECT_TRUE(ids.insert(check.id).second) << check.id;
    EXPECT_NE(std::string(check.id).find('-'), std::string::npos) << check.id;
    EXPECT_THAT(GroupOf(check), testing::MatchesRegex("[a-z]+"));
  }
}

TEST(TheChecks, SayWhatAndWhyInSentences) {
  for (const Check& check : Checks()) {
    EXPECT_THAT(check.sentence, testing::EndsWith(".")) << check.id;
    EXPECT_THAT(check.explanation, testing::EndsWith(".")) << check.id;
  }
}

TEST(TheChecks, NeedNoClaimThatAProfileCannotMake) {
  for (const Check& check : Checks()) {
    EXPECT_TRUE(*check.claim == '\0' || Claims().count(check.claim) == 1) << check.id;
  }
}

// One row for each check, with what --list prints.
TEST(TheChecks, AreThoseOfThePage) {
  const std::string file = SOURCE_FOLDER "/docs/conform.md";
  const std::string head = "|---|---|---|---|---|\n";
  std::string page = testsupport::ScratchFolder::ReadFile(file);
  std::string rows;
  for (const Check& check : Checks()) {
    const std::string claim = check.claim;
    rows += std::string("| `") + check.id + "` | " + (check.level == Level::Basic ? "basic" : "full") + " | " +
            (check.severity == Severity::Contract ? "contract" : "practice") + " | " +
            (claim.empty() ? "" : "`" + claim + "` ") + "| " + check.sentence + " |\n";
  }
  if (std::getenv("UPDATE_GOLDENS") != nullptr) {
    page.replace(page.find(head), std::string::npos, head + rows);
    std::ofstream(file, std::ios::binary) << page;
  }
  EXPECT_THAT(page, testing::EndsWith(head + rows)) << "Write it anew with UPDATE_GOLDENS=1.";
}

TEST(TheChecks, AreFoundByTheirIds) {
  EXPECT_STREQ(FindCheck("settings-kept")->id, "settings-kept");
  EXPECT_EQ(FindCheck("settings"), nullptr);
}

TEST(AnExpectation, ThatHoldsSaysNothing) {
  EXPECT_NO_THROW(Expect(true, "no"));
}

TEST(AnExpectation, ThatDoesNotHoldSaysWhatAndWhoIsToBlame) {
  try {
    Expect(false, "it is blue", "SetColour");
    FAIL();
  } catch (const Violation& violation) {
    EXPECT_STREQ(violation.what(), "it is blue");
    EXPECT_EQ(violation.slot, "SetColour");
  }
}

}  // namespace
}  // namespace devhost

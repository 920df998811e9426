#include "devhost/script/ScriptExpectations.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using Subject = ExpectAction::Subject;
using Comparison = ExpectAction::Comparison;
using testing::ElementsAre;
using testing::HasSubstr;

// The lines of an expectation that is not met; none when it is.
using Lines = std::vector<std::string>;

class ACheckedExpectation : public testing::Test {
 protected:
  Lines Check(const ExpectAction& action, const std::string& inHost = "") {
    const auto unmet = expectations.Check(action, [&inHost] { return inHost; });
    if (!unmet) {
      return {};
    }
    EXPECT_EQ(unmet->kind, ScriptOccurrence::Kind::Expect);
    Lines lines = {unmet->text};
    lines.insert(lines.end(), unmet->details.begin(), unmet->details.end());
    return lines;
  }
  void Happens(Occurrence::Kind kind, const std::string& text) {
    Occurrence occurrence;
    occurrence.kind = kind;
    occurrence.text = text;
    expectations.Note(occurrence);
  }
  static ExpectAction Expect(Subject subject, Comparison comparison, const std::string& text) {
    return {subject, 12, 7, "sysName", comparison, text};
  }

  const DriverNames names{{{12, "kitchen", "", ""}}};
  Masker secrets{false};
  ScriptExpectations expectations{names, secrets};
};

TEST_F(ACheckedExpectation, IsMetByTheSameText) {
  EXPECT_THAT(Check(Expect(Subject::File, Comparison::Is, "a\nb"), "a\nb"), ElementsAre());
  EXPECT_THAT(Check(Expect(Subject::File, Comparison::Is, "sysName a"), "sysName b"),
              ElementsAre("the file of kitchen is not as expected", "expected: sysName a", "found:    sysName b"));
}

TEST_F(ACheckedExpectation, IsMetByAMatch) {
  EXPECT_THAT(Check(Expect(Subject::Setting, Comparison::Matches, "^b$"), "a\nb"), ElementsAre());
  EXPECT_THAT(Check(Expect(Subject::Setting, Comparison::Matches, "^c"), "a"),
              ElementsAre("the setting \"sysName\" of kitchen does not match", "expected: ^c", "found:    a"));
  EXPECT_THAT(Check(Expect(Subject::Setting, Comparison::Matches, "c"), ""), testing::Contains("found:    (empty)"));
}

TEST_F(ACheckedExpectation, IsMetByTheTextOfAGoldenFileAtAnyTime) {
  const testsupport::ScratchFolder folder;
  const std::string golden = folder.Write("golden", "made on {time}\n");
  const ExpectAction action = Expect(Subject::State, Comparison::Golden, golden);
  EXPECT_THAT(Check(action, "made on Monday, May, 04 2020 at 01:02:03\n"), ElementsAre());
  EXPECT_THAT(Check(action, "made on Monday\n").at(0),
              "the state of kitchen is not what the golden file \"" + golden + "\" holds");
}

TEST_F(ACheckedExpectation, LooksAtTheLastOfEachKind) {
  EXPECT_THAT(Check(Expect(Subject::Reply, Comparison::Is, "<id>1</id>")),
              ElementsAre("there has been no reply yet", "expected: <id>1</id>"));
  EXPECT_THAT(Check(Expect(Subject::Log, Comparison::Is, "a")),
              ElementsAre("there has been no log line yet", "expected: a"));
  EXPECT_THAT(Check(Expect(Subject::Output, Comparison::Is, "a")),
              ElementsAre("there has been no output yet: no program has run", "expected: a"));
  Happens(Occurrence::Kind::Reply, "a");
  Happens(Occurrence::Kind::Reply, "b");
  Happens(Occurrence::Kind::Notification, "c");
  Happens(Occurrence::Kind::Log, "d");
  EXPECT_THAT(Check(Expect(Subject::Reply, Comparison::Is, "b")), ElementsAre());
  EXPECT_THAT(Check(Expect(Subject::Notification, Comparison::Is, "c")), ElementsAre());
  EXPECT_THAT(Check(Expect(Subject::Log, Comparison::Is, "d")), ElementsAre());
}

TEST_F(ACheckedExpectation, LooksAtTheHostForAllElse) {
  EXPECT_THAT(Check(Expect(Subject::Flag, Comparison::Is, "false"), "true").at(0),
              "the flag of variable 7 of device 12 is not as expected");
  const auto gone = []() -> std::string { throw std::runtime_error("it has gone"); };
  const auto unmet = expectations.Check(Expect(Subject::File, Comparison::Is, "a"), gone);
  EXPECT_EQ(unmet->text, "it has gone");
}

TEST_F(ACheckedExpectation, TakesAnOutputWithoutItsLastLineFeedButNotForAGoldenFile) {
  const testsupport::ScratchFolder folder;
  expectations.NoteOutput("a\n\n");
  EXPECT_THAT(Check(Expect(Subject::Output, Comparison::Is, "a\n")), ElementsAre());
  EXPECT_THAT(Check(Expect(Subject::Output, Comparison::Golden, folder.Write("golden", "a\n\n"))), ElementsAre());
  expectations.NoteOutput(std::nullopt);
  EXPECT_THAT(Check(Expect(Subject::Output, Comparison::Is, "a\n")).at(0), HasSubstr("no program has run"));
}

TEST_F(ACheckedExpectation, OfNoneIsAboutTheLastActionThatCanCauseAny) {
  const ExpectAction none = Expect(Subject::Notification, Comparison::None, "");
  EXPECT_THAT(Check(none), ElementsAre());
  Happens(Occurrence::Kind::Notification, "<id>1</id>");
  Happens(Occurrence::Kind::Notification, "<id>2</id>");
  const Lines unmet = {"there was a notification", "expected: none", "found:    <id>2</id> (the last of 2)"};
  EXPECT_EQ(Check(none), unmet);
  for (const Action& quiet : {Action(PrintAction()), Action(ShowAction()), Action(none)}) {
    expectations.BeginAction(quiet);
    EXPECT_EQ(Check(none), unmet);
  }
  expectations.BeginAction(LoadProjectAction());
  EXPECT_THAT(Check(none), ElementsAre());
  EXPECT_THAT(Check(Expect(Subject::Notification, Comparison::Is, "<id>2</id>")), ElementsAre())
      << "it is still the last one";
}

TEST_F(ACheckedExpectation, ThatIsNotMetShowsNoSecret) {
  secrets.Xml("<community>hidden</community>");
  EXPECT_THAT(Check(Expect(Subject::Output, Comparison::Is, "hidden a")), testing::Contains("expected: ***** a"));
  EXPECT_THAT(Check(Expect(Subject::File, Comparison::Is, "# hidden a"), "# hidden b"),
              ElementsAre("the file of kitchen is not as expected", "expected: # ***** a", "found:    # ***** b"));
  EXPECT_THAT(Check(Expect(Subject::File, Comparison::Matches, "^rocommunity  x$"), "rwcommunity  y\n"),
              ElementsAre("the file of kitchen does not match", "expected: *****", "found:    rwcommunity  *****\n"));
  EXPECT_THAT(Check(Expect(Subject::File, Comparison::Matches, "^rocommunity +\\w{3}$"), ""),
              testing::Contains("expected: ^rocommunity +\\w{3}$"));
  for (const char* const pattern : {">other<", "other", "<community>x"}) {
    EXPECT_THAT(Check(Expect(Subject::State, Comparison::Matches, pattern), "<base>y</base>"),
                testing::Contains("expected: *****"));
  }
  EXPECT_THAT(Check(Expect(Subject::State, Comparison::Matches, "<known>"), "<base>y</base>"),
              testing::Contains("expected: <known>"));
  EXPECT_THAT(Check(Expect(Subject::State, Comparison::Is, "<known>x</known>"), "<base>y</base>"),
              ElementsAre("the state of kitchen is not as expected", "expected: <known>(1 byte)</known>",
                          "found:    <base>(1 byte)</base>"));
  ExpectAction community = Expect(Subject::Setting, Comparison::Is, "my");
  community.setting = "communityRead";
  EXPECT_THAT(Check(community, "xy"), ElementsAre("the setting \"communityRead\" of kitchen is not as expected",
                                                  "expected: *****", "found:    ***** (differs in what is masked)"));
}

TEST_F(ACheckedExpectation, ThatIsNotMetShowsOnlyTheBeginningOfALongText) {
  const Lines lines = Check(Expect(Subject::File, Comparison::Matches, "a"), std::string(1000, '#'));
  EXPECT_EQ(lines.at(2), "found:    " + std::string(400, '#') + "... (1000 bytes)");
}

}  // namespace
}  // namespace devhost

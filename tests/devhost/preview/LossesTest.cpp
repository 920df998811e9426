// What a write drops, in words.
#include "devhost/preview/Losses.h"

#include <gmock/gmock.h>

#include "config/SectionMerge.h"
#include "config/SectionWriter.h"
#include "devhost/snmpd/LineCutter.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Section(const std::string& name, const std::string& stamp) {
  managed_section::Settings settings;
  settings.sysName = name;
  settings.communityRead = "reader";
  settings.agentXTimeout = "6";
  settings.agentXRetries = "2";
  return managed_section::Write(managed_section::FixedTexts(), settings, stamp);
}

std::string After(const std::string& before) {
  return managed_section::Merge(Section("new", "today"), before);
}

// The losses of the agent's write, as "LINE RULE".
std::vector<std::string> Lost(const std::string& before) {
  std::vector<std::string> lost;
  for (const Finding& loss : LossesOf(before, After(before), "snmpd.conf", false)) {
    lost.push_back(std::to_string(loss.line) + " " + loss.rule);
  }
  return lost;
}

// The agent's own section, with something put behind the line that begins like that, and the line's number.
struct Edited {
  Edited(const std::string& begin, const std::string& added) : text(Section("old", "yesterday") + "\n# below\nload 1\n") {
    const std::size_t at = text.find('\n', text.find("\n" + begin) + 1) + 1;
    text.insert(at, added);
    for (LineCutter lines(text); lines.Next();) {
      line = lines.Line() == added.substr(0, added.find('\n')) ? lines.Number() : line;
    }
  }
  std::string text;
  std::size_t line = 0;
};

TEST(AWrite, LosesNothingOfWhatTheAgentWroteAndOfWhatIsBelow) {
  EXPECT_THAT(Lost(Section("old", "yesterday") + "\n# below\nload 1\n"), IsEmpty());
  EXPECT_THAT(Lost("# a comment\nload 1"), IsEmpty());
}

TEST(AWrite, LosesACommentInTheSection) {
  const Edited edited("sysServices", "# call 5551 first\n");
  EXPECT_THAT(Lost(edited.text), ElementsAre(std::to_string(edited.line) + " line-lost"));
}

TEST(AWrite, LosesALineOfAnotherProgramInTheSection) {
  const Edited edited("sysServices", "[snmp] mibs x\n");
  EXPECT_THAT(Lost(edited.text), ElementsAre(std::to_string(edited.line) + " line-lost"));
}

TEST(AWrite, LosesWhatARuleKnowsOnlyOnce) {
  const Edited edited("sysServices", "view all included .1\n");
  EXPECT_THAT(Lost(edited.text), ElementsAre(std::to_string(edited.line) + " foreign-line-in-section"));
  EXPECT_THAT(Lost("# mine\nload 1\n" + Section("old", "yesterday")), ElementsAre("1 text-above-section"));
}

TEST(AWrite, LosesALineOfItsOwnWordsOutsideOfThem) {
  // The same text below the section stays, so it is not a reason to miss this one.
  const Edited edited("sysServices", "# below\n");
  EXPECT_THAT(Lost(edited.text), testing::SizeIs(1));
}

TEST(AWrite, DoesNotLoseTheCarriageReturnsOfAnEditor) {
  std::string text = Section("old", "yesterday");
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) {
    text.insert(at, "\r");
  }
  EXPECT_THAT(Lost(text), IsEmpty());
}

TEST(AWrite, LosesNothingThatIsReadInUtf16) {
  EXPECT_THAT(LossesOf(std::string("\xFF\xFE#\0", 4), "", "snmpd.conf", false), IsEmpty());
}

}  // namespace
}  // namespace devhost

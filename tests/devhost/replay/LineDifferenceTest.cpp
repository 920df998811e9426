#include "devhost/replay/LineDifference.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

LineDifference Compare(const std::string& expected, const std::string& found, bool showSecrets = false) {
  Masker secrets(showSecrets);
  return CompareLines(expected, found, secrets);
}

TEST(TwoLines, AgreeInAnyOrderOfTheirMembers) {
  EXPECT_EQ(Compare("{\"kind\":\"reply\",\"driver\":\"agent\"}", "{\"driver\":\"agent\",\"kind\":\"reply\"}").what, "");
}

TEST(AMember, ThatIsNotExpectedMayBeAnything) {
  EXPECT_EQ(Compare("{\"kind\":\"reply\"}", "{\"kind\":\"reply\",\"xml\":\"<Fail/>\"}").what, "");
}

TEST(AMember, ThatIsExpectedMayNotBeMissing) {
  EXPECT_EQ(
      Compare("{\"kind\":\"reply\",\"driver\":\"agent\",\"xml\":\"\"}", "{\"kind\":\"reply\",\"driver\":\"agent\"}").what,
      "the member \"xml\" of the reply of agent is missing");
}

TEST(ShortTexts, AreShownWhole) {
  const LineDifference difference = Compare("{\"kind\":\"reply\",\"driver\":\"agent\",\"xml\":\"<Success/>\"}",
                                            "{\"kind\":\"reply\",\"driver\":\"agent\",\"xml\":\"<Fail/>\"}");
  EXPECT_EQ(difference.what, "the member \"xml\" of the reply of agent differs");
  EXPECT_THAT(difference.details, ElementsAre("  expected: <Success/>", "  found:    <Fail/>"));
}

TEST(LongXml, IsShownWhereItDiffers) {
  const std::string begin = "{\"kind\":\"reply\",\"xml\":\"<a><deviceId>1</deviceId><deviceId>2</deviceId><deviceId>";
  for (const bool showSecrets : {false, true}) {
    EXPECT_THAT(Compare(begin + "3</deviceId></a>\"}", begin + "4</deviceId></a>\"}", showSecrets).details,
                ElementsAre("  first difference in line 4, column 13 (- expected, + found):", "      <deviceId>1</deviceId>",
                            "      <deviceId>2</deviceId>", "  -   <deviceId>3</deviceId>", "  +   <deviceId>4</deviceId>",
                            "                ^"));
  }
}

TEST(ALineOfAnotherSort, IsShownWithTheExpectedOne) {
  const std::string reply = "{\"kind\":\"reply\",\"driver\":\"agent\",\"xml\":\"<Fail/>\"}";
  const std::string log = "{\"kind\":\"log\",\"driver\":\"kitchen\",\"text\":\"a\"}";
  EXPECT_EQ(Compare(reply, log).what, "something else came");
  EXPECT_THAT(Compare(reply, log).details,
              ElementsAre("  expected: reply of agent <Fail/>", "  found:    log of kitchen: a"));
  EXPECT_THAT(Compare(reply, "").details, ElementsAre("  expected: reply of agent <Fail/>", "  found:    nothing more"));
  EXPECT_THAT(Compare("", log).details, ElementsAre("  expected: nothing more", "  found:    log of kitchen: a"));
  EXPECT_THAT(Compare("{\"kind\":\"command\",\"driver\":\"agent\",\"name\":\"a\"}",
                      "{\"kind\":\"command\",\"driver\":\"agent\",\"name\":\"b\"}")
                  .what,
              "something else came");
}

// Everything in a line that may hold a community, in turn.
TEST(ACommunity, IsNotShown) {
  const std::pair<std::string, std::string> kPlaces[] = {
      {"{\"kind\":\"reply\",\"xml\":\"<a><snmpCommunityReadSetting>", "</snmpCommunityReadSetting></a>\"}"},
      {"{\"kind\":\"command\",\"parameters\":{\"xml\":\"<a><snmpCommunityReadSetting>",
       "</snmpCommunityReadSetting></a>\"}}"},
      {"{\"kind\":\"file\",\"text\":\"rocommunity ", "\"}"},
      {"{\"kind\":\"log\",\"text\":\"community=", "\"}"},
      {"{\"kind\":\"settings\",\"settings\":[{\"name\":\"communityRead\",\"value\":\"", "\"}],\"trapTargets\":[]}"},
      {"{\"kind\":\"settings\",\"settings\":[],\"trapTargets\":[{\"community\":\"", "\"}]}"}};
  for (const auto& [before, after] : kPlaces) {
    const LineDifference difference = Compare(before + "kX7first" + after, before + "kX8second" + after);
    EXPECT_NE(difference.what, "") << before;
    std::string all = difference.what;
    for (const std::string& detail : difference.details) {
      all += "\n" + detail;
    }
    EXPECT_THAT(all, testing::Not(testing::ContainsRegex("kX7|kX8"))) << before;
    EXPECT_THAT(all, testing::ContainsRegex("\\*\\*\\*\\*\\*|masked"));
    std::string shown;
    for (const std::string& detail : Compare(before + "kX7first" + after, before + "kX8second" + after, true).details) {
      shown += detail + "\n";
    }
    EXPECT_THAT(shown, testing::HasSubstr("kX7first"));
  }
}

}  // namespace
}  // namespace devhost

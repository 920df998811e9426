#include "config/SectionReader.h"

#include <gmock/gmock.h>

#include "tests/config/ManagedDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using InsideASection = ManagedDeviceTest;
using OutsideASection = ManagedDeviceTest;
using AFilledSetting = ManagedDeviceTest;
using AWordValue = ManagedDeviceTest;
using AgentXValues = ManagedDeviceTest;

TEST(TheLinesInside, AreThoseBetweenTheLinesOfTheMarkers) {
  EXPECT_EQ(managed_section::LinesInside("a\n# Halvoren Section Start\nb\n\nc\n# Halvoren Section End\nd\n"), "b\n\nc\n");
  EXPECT_EQ(managed_section::LinesInside("Halvoren Section Start\nb\nc Halvoren Section End"), "b\n");
  EXPECT_EQ(managed_section::LinesInside("Halvoren Section Start\nb"), "b");
  EXPECT_EQ(managed_section::LinesInside("Halvoren Section Start"), "");
}

TEST_F(OutsideASection, NothingIsSet) {
  record->SetConfig(
      "rocommunity x\nagentXTimeout 9\nsysName box\ntrap2sink 10.0.0.5\n# Halvoren Section End\nsysName box\n");
  agent.MergeFromConfig(record);
  EXPECT_THAT(journal.Take(), IsEmpty());
  EXPECT_EQ(record->GetAgentXTimeout(), "6");
}

TEST_F(OutsideASection, LinesAboveAndBelowAreIgnored) {
  record->SetConfig(
      "sysName  above\n# Halvoren Section Start\nsysLocation  Attic\n# Halvoren Section End\nsysContact  below\n");
  agent.MergeFromConfig(record);
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysLocationSetting Attic"));
}

TEST_F(OutsideASection, AStartMarkerOpensWhereverItStandsInTheLine) {
  record->SetConfig("sysName  x Halvoren Section Start sysName  y\r\nsysName  box");
  agent.MergeFromConfig(record);
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysNameSetting box"));
}

TEST_F(OutsideASection, AStartMarkerOfAnotherCaseOpensNothing) {
  record->SetConfig("# halvoren section start\nsysName  box\n");
  agent.MergeFromConfig(record);
  EXPECT_THAT(journal.Take(), IsEmpty());
}

TEST_F(OutsideASection, ALineWithBothMarkersOpens) {
  record->SetConfig("# Halvoren Section Start Halvoren Section End\nsysName  box\n");
  agent.MergeFromConfig(record);
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysNameSetting box"));
}

TEST_F(InsideASection, ALineWithBothMarkersCloses) {
  ReadSection("# Halvoren Section Start Halvoren Section End\nsysName  box");
  EXPECT_THAT(journal.Take(), IsEmpty());
}

TEST_F(InsideASection, AnEndMarkerIsTestedBeforeEveryKeyword) {
  ReadSection("sysName  Halvoren Section End\nsysContact  after");
  EXPECT_THAT(journal.Take(), IsEmpty());
}

TEST_F(InsideASection, AMissingEndMarkerLetsItRunToTheEnd) {
  record->SetConfig("# Halvoren Section Start\nsysName  box\n\n\nsysContact  Ada");
  agent.MergeFromConfig(record);
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysNameSetting box", "7.SetSysContactSetting Ada"));
}

TEST_F(InsideASection, EverySectionOfTheTextIsRead) {
  record->SetConfig(
      "# Halvoren Section Start\nsysName  box\n# Halvoren Section End\nsysContact  between\n"
      "# Halvoren Section Start\nsysLocation  Attic\n# Halvoren Section End\n");
  agent.MergeFromConfig(record);
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysNameSetting box", "7.SetSysLocationSetting Attic"));
}

TEST_F(InsideASection, OtherLinesAreIgnored) {
  ReadSection("# a comment\nmaster  agentx\nagentXSocket  tcp:127.0.0.1:705\nincludeAllDisks  10%\nSYSNAME  box\n\n \n\t");
  EXPECT_THAT(journal.Take(), IsEmpty());
}

TEST_F(InsideASection, AnotherStartMarkerIsTextLikeAnyOther) {
  ReadSection("# Halvoren Section Start\nsysName  Halvoren Section Start");
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysNameSetting Halvoren Section Start"));
}

TEST_F(InsideASection, ACommentWithAKeywordIsTakenAsThatLine) {
  ReadSection("# rocommunity is read-only");
  EXPECT_THAT(Setters(), ElementsAre("7.SetCommunityReadSetting #  is read-only"));
}

TEST_F(InsideASection, TheFirstKeywordOfTheOrderDecidesNotTheFirstInTheLine) {
  ReadSection("sysName  rwcommunity");
  EXPECT_THAT(Setters(), ElementsAre("7.SetCommunityWriteSetting sysName"));
}

// Each line contains one keyword together with all that come after it in the order in which lines are tested.
TEST_F(InsideASection, EachKeywordIsTestedBeforeAllLaterOnes) {
  const std::vector<std::pair<std::string, std::string>> order = {{"rocommunity", "7.SetCommunityReadSetting"},
                                                                  {"rwcommunity", "7.SetCommunityWriteSetting"},
                                                                  {"agentXTimeout", "timeout"},
                                                                  {"agentXRetries", "nothing"},
                                                                  {"sysContact", "7.SetSysContactSetting"},
                                                                  {"sysLocation", "7.SetSysLocationSetting"},
                                                                  {"sysName", "7.SetSysNameSetting"},
                                                                  {"trap2sink", "7.SetTrapTargetsSetting"}};
  for (std::size_t first = 0; first != order.size(); ++first) {
    std::string line;
    for (std::size_t keyword = order.size(); keyword != first; --keyword) {
      line += order[keyword - 1].first + " ";
    }
    device.communityRead = device.communityWrite = device.sysContact = device.sysLocation = device.sysName = "";
    device.trapTargets.clear();
    record->SetAgentXTimeout("6");
    ReadSection(line);
    const std::vector<std::string> setters = Setters();
    const std::string& expected = order[first].second;
    if (expected[0] == '7') {
      ASSERT_EQ(setters.size(), 1U) << line;
      EXPECT_EQ(setters[0].substr(0, expected.size()), expected) << line;
    } else {
      EXPECT_THAT(setters, IsEmpty()) << line;
    }
    EXPECT_EQ(record->GetAgentXTimeout() == "6", expected != "timeout") << line;
  }
}

TEST_F(InsideASection, ALineWhoseGuardFailsIsNotTriedAgainstLaterKeywords) {
  device.communityRead = "abc";
  ReadSection("rocommunity  sysName box\nrocommunity  agentXTimeout 9\nrocommunity trap2sink 10.0.0.5");
  EXPECT_THAT(Setters(), IsEmpty());
  EXPECT_EQ(record->GetAgentXTimeout(), "6");
}

TEST_F(AFilledSetting, AsksForTheErasedFlagThenForTheValueThenSets) {
  ReadSection("rocommunity  r\nrwcommunity  w\nsysContact  c\nsysLocation  l\nsysName  n");
  EXPECT_THAT(
      journal.Take(),
      ElementsAre("7.GetWasCommunityReadSettingErased", "7.GetCommunityReadSetting", "7.SetCommunityReadSetting r",
                  "7.GetWasCommunityWriteSettingErased", "7.GetCommunityWriteSetting", "7.SetCommunityWriteSetting w",
                  "7.GetWasSysContactSettingErased", "7.GetSysContactSetting", "7.SetSysContactSetting c",
                  "7.GetWasSysLocationSettingErased", "7.GetSysLocationSetting", "7.SetSysLocationSetting l",
                  "7.GetWasSysNameSettingErased", "7.GetSysNameSetting", "7.SetSysNameSetting n"));
}

TEST_F(AFilledSetting, KeepsTheDevicesValue) {
  device.communityRead = device.communityWrite = device.sysContact = device.sysLocation = device.sysName = "abc";
  ReadSection("rocommunity  xyz\nrwcommunity  xyz\nsysContact  xyz\nsysLocation  xyz\nsysName  xyz");
  EXPECT_THAT(Setters(), IsEmpty());
  EXPECT_EQ(device.communityRead, "abc");
}

TEST_F(AFilledSetting, StaysEmptyWhenItWasErased) {
  device.communityReadErased = device.communityWriteErased = true;
  device.sysContactErased = device.sysLocationErased = device.sysNameErased = true;
  ReadSection("rocommunity  xyz\nrwcommunity  xyz\nsysContact  xyz\nsysLocation  xyz\nsysName  xyz");
  EXPECT_THAT(Setters(), IsEmpty());
  EXPECT_EQ(device.communityRead, "");
}

TEST_F(AFilledSetting, AsksOnlyItsOwnErasedFlag) {
  device.communityReadErased = device.communityWriteErased = device.sysContactErased = true;
  device.sysLocationErased = device.trapTargetsErased = true;
  ReadSection("sysName  box");
  EXPECT_EQ(device.sysName, "box");
}

TEST_F(AFilledSetting, TakesTheFirstOfTwoLines) {
  ReadSection("sysName  first\nsysName  second");
  EXPECT_EQ(device.sysName, "first");
}

TEST_F(AFilledSetting, IsTriedAgainWhileItIsStillEmpty) {
  ReadSection("sysName  \nsysName  second");
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysNameSetting ", "7.SetSysNameSetting second"));
}

TEST_F(AWordValue, KeepsInnerSpacing) {
  ReadSection("sysName  my  box");
  EXPECT_EQ(device.sysName, "my  box");
}

TEST_F(AWordValue, LosesTheKeywordWhereverItOccurs) {
  ReadSection("sysName  box sysName");
  EXPECT_EQ(device.sysName, "box");
}

TEST_F(AWordValue, KeepsAWordThatOnlyContainsTheKeyword) {
  ReadSection("sysName  sysNames\nsysContact:  Ada");
  EXPECT_EQ(device.sysName, "sysNames");
  EXPECT_EQ(device.sysContact, "sysContact:  Ada");
}

TEST_F(AWordValue, KeepsOtherKeywords) {
  ReadSection("sysContact  sysName Ada");
  EXPECT_EQ(device.sysContact, "sysName Ada");
}

TEST_F(AWordValue, IsPartedBySpacesOnly) {
  ReadSection("sysName\tbox");
  EXPECT_EQ(device.sysName, "sysName\tbox");
}

TEST_F(AWordValue, LosesWhiteSpaceAtItsEnds) {
  ReadSection("\t sysName  \t\tmy\tbox \v\f\t\r");
  EXPECT_EQ(device.sysName, "my\tbox");
}

TEST_F(AWordValue, KeepsEveryPrintableCharacter) {
  std::string all;
  for (char character = '!'; character <= '~'; ++character) {
    all += character;
  }
  ReadSection("sysName  " + all);
  EXPECT_EQ(device.sysName, all);
}

TEST_F(AWordValue, KeepsANulByteAndWhatFollows) {
  const std::string nul(1, '\0');
  record->SetConfig("a" + nul + "b\n# Halvoren Section Start\nsysName  my" + nul + " box\nsysContact  Ada\n");
  agent.MergeFromConfig(record);
  EXPECT_EQ(device.sysName, "my" + nul + " box");
  EXPECT_EQ(device.sysContact, "Ada");
}

TEST_F(AWordValue, KeepsItsQuotes) {
  ReadSection("rocommunity  \"my community\"\nrwcommunity  \"x\"");
  EXPECT_EQ(device.communityRead, "\"my community\"");
  EXPECT_EQ(device.communityWrite, "\"x\"");
}

TEST_F(AWordValue, WithQuotesIsQuotedOnceMoreByTheNextWrite) {
  ReadSection("rocommunity  \"my community\"");
  agent.MergeToConfig(record);
  EXPECT_THAT(record->GetConfig(), testing::HasSubstr("\nrocommunity  \"\"my community\"\"\n"));
}

TEST_F(AWordValue, MayBeEmpty) {
  ReadSection("sysName");
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysNameSetting "));
}

TEST_F(AgentXValues, TakeTheSecondField) {
  for (const char* line : {"agentXTimeout 5", "agentXTimeout  5", "agentXTimeout   5 ", "agentXTimeout 5 6"}) {
    record->SetAgentXTimeout("6");
    ReadSection(line);
    EXPECT_EQ(record->GetAgentXTimeout(), "5") << line;
  }
  EXPECT_THAT(journal.Take(), IsEmpty());
}

TEST_F(AgentXValues, AloneOnTheLineSetNothing) {
  record->SetAgentXTimeout("9");
  ReadSection("agentXTimeout");
  EXPECT_EQ(record->GetAgentXTimeout(), "9");
  ReadSection("agentXTimeout\t5");
  EXPECT_EQ(record->GetAgentXTimeout(), "9");
}

TEST_F(AgentXValues, BehindALeadingSpaceSetTheKeyword) {
  ReadSection(" agentXTimeout 5");
  EXPECT_EQ(record->GetAgentXTimeout(), "agentXTimeout");
}

TEST_F(AgentXValues, AreSetEmptyByTrailingSpaces) {
  ReadSection("agentXTimeout  ");
  EXPECT_EQ(record->GetAgentXTimeout(), "");
}

TEST_F(AgentXValues, KeepACarriageReturn) {
  ReadSection("agentXTimeout  5\r");
  EXPECT_EQ(record->GetAgentXTimeout(), "5\r");
}

TEST_F(AgentXValues, AreReplacedByEveryLine) {
  record->SetAgentXTimeout("8");
  ReadSection("agentXTimeout  5\n# the agentXTimeout\nagentXTimeout  7");
  EXPECT_EQ(record->GetAgentXTimeout(), "7");
  ReadSection("# the agentXTimeout");
  EXPECT_EQ(record->GetAgentXTimeout(), "the");
}

TEST_F(AgentXValues, NeverChangeTheRetries) {
  ReadSection("agentXRetries  5");
  EXPECT_EQ(record->GetAgentXRetries(), "2");
  EXPECT_EQ(record->GetAgentXTimeout(), "6");
  EXPECT_THAT(journal.Take(), IsEmpty());
}

}  // namespace

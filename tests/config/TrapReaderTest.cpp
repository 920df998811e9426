#include <gmock/gmock.h>

#include "tests/config/ManagedDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::TrapText;

class ATrapLine : public ManagedDeviceTest {
 protected:
  // Returns what the device holds after the line was read, as target|community|port.
  std::string Read(const std::string& line) {
    device.trapTargets.clear();
    ReadSection(line);
    return TrapText(device.trapTargets);
  }
};

using TrapLines = ATrapLine;

TEST_F(ATrapLine, WithAQuotedCommunityHasThreeFields) {
  EXPECT_EQ(Read("trap2sink  10.0.0.5  \"pub lic\"  162"), "10.0.0.5|pub lic|162");
  EXPECT_EQ(Read("trap2sink 10.0.0.5 \"public\" 162"), "10.0.0.5|public|162");
}

TEST_F(ATrapLine, KeepsEveryPrintableCharacterButQuotes) {
  std::string all;
  for (char character = '!'; character <= '~'; ++character) {
    if (character != '"') {
      all += character;
    }
  }
  EXPECT_EQ(Read("trap2sink  h" + all + "  \"c" + all + "\"  p" + all), "h" + all + "|c" + all + "|p" + all);
}

TEST_F(ATrapLine, WithoutQuotesHasTheRestAsItsCommunity) {
  EXPECT_EQ(Read("trap2sink  10.0.0.5  public  162"), "10.0.0.5|  public  162|");
}

TEST_F(ATrapLine, WithATargetOnlyHasNothingElse) {
  EXPECT_EQ(Read("trap2sink  10.0.0.5"), "10.0.0.5||");
}

TEST_F(ATrapLine, WithoutATargetIsStillATrap) {
  EXPECT_EQ(Read("trap2sink"), "||");
  EXPECT_EQ(Read("trap2sink   "), "||");
}

TEST_F(ATrapLine, TakesTheFirstWordAsItsTargetEvenInAComment) {
  EXPECT_EQ(Read("# trap2sink 10.0.0.5"), "#|  10.0.0.5|");
}

TEST_F(ATrapLine, TakesAQuoteInFrontAsItsTarget) {
  EXPECT_EQ(Read("trap2sink \"10.0.0.5\" public"), "\"|10.0.0.5|public");
}

TEST_F(ATrapLine, IgnoresWhatFollowsThePort) {
  EXPECT_EQ(Read("trap2sink  10.0.0.5  \"c\"  162 more \"and more\""), "10.0.0.5|c|162");
}

TEST_F(ATrapLine, LosesTheKeywordInsideTheCommunity) {
  EXPECT_EQ(Read("trap2sink  10.0.0.5  \"a trap2sink b\"  162"), "10.0.0.5|a  b|162");
}

TEST_F(ATrapLine, StaysOpenAfterAnEmptyQuotedCommunity) {
  EXPECT_EQ(Read("trap2sink  10.0.0.5  \"\"  162"), "10.0.0.5|  162|");
  EXPECT_EQ(Read("trap2sink  10.0.0.5  \"  \"  162 \"99"), "10.0.0.5|162|99");
}

TEST_F(ATrapLine, WithAnUnclosedQuoteKeepsTrailingSpaces) {
  EXPECT_EQ(Read("trap2sink  10.0.0.5  \"pub lic  "), "10.0.0.5|pub lic  |");
}

TEST_F(ATrapLine, TakesAQuoteBehindTheCommunityAsItsPort) {
  EXPECT_EQ(Read("trap2sink  10.0.0.5  \"c\"\"162"), "10.0.0.5|c|\"");
}

TEST_F(ATrapLine, WithABareCommunityIsClosedByALaterQuote) {
  EXPECT_EQ(Read("trap2sink 10.0.0.5 a b \"162\" 9"), "10.0.0.5|a b|162");
}

TEST_F(ATrapLine, TrimsTabsAndCarriageReturnsFromTargetAndPort) {
  EXPECT_EQ(Read("trap2sink \t10.0.0.5\t \"c\t\" 162\r"), "10.0.0.5|c|162");
  EXPECT_EQ(Read("trap2sink 10.0.0.5\r"), "10.0.0.5||");
}

TEST_F(ATrapLine, KeepsACarriageReturnInAnUnquotedCommunity) {
  EXPECT_EQ(Read("trap2sink 10.0.0.5 public\r"), "10.0.0.5| public\r|");
}

TEST_F(TrapLines, AreSetTogetherOnceAtTheEnd) {
  ReadSection("trap2sink  10.0.0.5\nsysName  box\ntrap2sink  10.0.0.6 \"c\" 9");
  EXPECT_THAT(journal.Take(), ElementsAre("7.GetWasTrapTargetsSettingErased", "7.GetTrapTargetsSetting",
                                          "7.GetWasSysNameSettingErased", "7.GetSysNameSetting", "7.SetSysNameSetting box",
                                          "7.SetTrapTargetsSetting 10.0.0.5|| 10.0.0.6|c|9"));
}

// A list is copied each time it is asked for: asking at each line took a minute for a file of 70,000 targets.
TEST_F(TrapLines, AskADeviceThatHasTargetsOnceInAllSections) {
  device.trapTargets = {TrapTarget("a", "", "")};
  record->SetConfig(
      "# Halvoren Section Start\ntrap2sink  a\ntrap2sink  b\n# Halvoren Section End\n"
      "# Halvoren Section Start\ntrap2sink  c\n");
  agent.MergeFromConfig(record);
  EXPECT_THAT(journal.Take(), ElementsAre("7.GetWasTrapTargetsSettingErased", "7.GetTrapTargetsSetting"));
}

TEST_F(TrapLines, OfTheNextReadingAskTheDeviceAgain) {
  device.trapTargets = {TrapTarget("a", "", "")};
  ReadSection("trap2sink  b");
  device.trapTargets.clear();
  ReadSection("trap2sink  b");
  EXPECT_THAT(Setters(), ElementsAre("7.SetTrapTargetsSetting b||"));
}

TEST_F(TrapLines, OfSeveralSectionsAreOneList) {
  record->SetConfig(
      "# Halvoren Section Start\ntrap2sink  a\n# Halvoren Section End\ntrap2sink  b\n"
      "# Halvoren Section Start\ntrap2sink  c\n");
  agent.MergeFromConfig(record);
  EXPECT_THAT(Setters(), ElementsAre("7.SetTrapTargetsSetting a|| c||"));
}

TEST_F(TrapLines, GiveNothingToADeviceThatHasATarget) {
  device.trapTargets = {TrapTarget("", "", "")};
  ReadSection("trap2sink  10.0.0.5\ntrap2sink  10.0.0.6");
  EXPECT_THAT(Setters(), IsEmpty());
  EXPECT_EQ(device.trapTargets.size(), 1U);
}

TEST_F(TrapLines, GiveNothingToADeviceWhoseTargetsWereErased) {
  device.trapTargetsErased = true;
  ReadSection("trap2sink  10.0.0.5\ntrap2sink  10.0.0.6");
  EXPECT_THAT(journal.Take(), ElementsAre("7.GetWasTrapTargetsSettingErased"));
}

TEST_F(TrapLines, WhenThereAreNoneLeaveTheTargetsUntouched) {
  ReadSection("sysName  box");
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysNameSetting box"));
}

TEST_F(TrapLines, NeverAddOrClearTargets) {
  ReadSection("trap2sink  10.0.0.5\ntrap2sink  10.0.0.6");
  EXPECT_THAT(Setters(), ElementsAre("7.SetTrapTargetsSetting 10.0.0.5|| 10.0.0.6||"));
}

}  // namespace

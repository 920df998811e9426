#include "devhost/check/Advice.h"

#include <gmock/gmock.h>

#include "devhost/xml/XmlReader.h"
#include "tests/devhost/support/WholeSettings.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string Complete(const std::string& children) {
  return "<managedDevice>" + WholeSettings(children) + "</managedDevice>";
}

std::vector<Finding> Advice(const std::string& children, bool showSecrets = false) {
  return Advise(Complete(children), "settings.xml", showSecrets);
}

auto At(std::size_t line, const std::string& reason) {
  return AllOf(Field(&Finding::line, line), Field(&Finding::reason, HasSubstr(reason)));
}

constexpr char kReader[] = "<snmpCommunityReadSetting>reader</snmpCommunityReadSetting>";

TEST(Advice, OnSaneSettingsIsNone) {
  EXPECT_THAT(Advice(kReader + std::string("<snmpSysContactSetting>Ada, ground floor</snmpSysContactSetting>")), IsEmpty());
}

TEST(Advice, NamesTheElementAndItsLine) {
  EXPECT_THAT(Advice("\n<snmpSysContactSetting>#1</snmpSysContactSetting>\n"
                     "<snmpCommunityReadSetting>it's</snmpCommunityReadSetting>\n"),
              ElementsAre(At(2, "snmpSysContactSetting: the daemon takes a value that begins with #"),
                          At(3, "snmpCommunityReadSetting: a quote or a backslash in the community")));
}

TEST(Advice, LeavesOutWhatConcernsOnlyADeviceThatHasLostItsSettings) {
  EXPECT_THAT(Advice("<snmpCommunityReadSetting>two words</snmpCommunityReadSetting>"
                     "<snmpSysNameSetting>box sysName</snmpSysNameSetting><snmpTrapTargets>"
                     "<trapTarget><target>192.0.2.5</target><community>trapper</community><port>162</port></trapTarget>"
                     "</snmpTrapTargets>"),
              IsEmpty());
}

TEST(Advice, NamesOtherSettingsByTheirElements) {
  EXPECT_THAT(Advice("\n<snmpCommunityWriteSetting>both</snmpCommunityWriteSetting>\n"
                     "<snmpCommunityReadSetting>both</snmpCommunityReadSetting>\n"),
              ElementsAre(At(2,
                             "snmpCommunityWriteSetting: the write community is also the read community of "
                             "snmpCommunityReadSetting in line 3:")));
}

TEST(Advice, FindsALineFeedAndWhatItMakes) {
  const std::vector<Finding> advice =
      Advice(std::string(kReader) + "\n<snmpSysContactSetting>Ada\nextend evil /bin/true</snmpSysContactSetting>");
  EXPECT_THAT(advice, Contains(AllOf(Field(&Finding::rule, "line-feed"), At(2, "snmpSysContactSetting: a line feed"))));
  EXPECT_THAT(advice, Contains(Field(&Finding::rule, "foreign-line-in-section")));
}

TEST(Advice, JudgesEachTrapTargetAtItsLine) {
  const std::vector<Finding> advice =
      Advice(std::string(kReader) +
             "<snmpTrapTargets>\n"
             "<trapTarget><target>192.0.2.5</target><community/><port>162</port></trapTarget>\n"
             "<trapTarget><target/><community>trapper</community><port/></trapTarget>\n"
             "<trapTarget><target>::1</target><community>trapper</community><port>162</port></trapTarget>\n"
             "</snmpTrapTargets>");
  EXPECT_THAT(advice, Contains(At(2, "snmpTrapTargets: a trap target with a port and no community")));
  EXPECT_THAT(advice, Contains(At(3, "snmpTrapTargets: a trap target without a host")));
  EXPECT_THAT(advice, Contains(At(4, "snmpTrapTargets: the daemon appends the port")));
}

TEST(Advice, ThatNobodyIsLetInStandsAtTheRoot) {
  const std::vector<Finding> advice =
      Advise("\n" + Complete("<snmpSysNameSetting>box</snmpSysNameSetting>"), "settings.xml", false);
  ASSERT_EQ(advice.size(), 1u);
  EXPECT_EQ(advice[0].line, 2u);
  EXPECT_EQ(advice[0].rule, "no-access");
  EXPECT_EQ(advice[0].severity, Severity::Warning);
  EXPECT_EQ(advice[0].file, "settings.xml");
}

TEST(Advice, ShowsNoCommunityUnlessAsked) {
  const std::string children =
      "<snmpCommunityReadSetting>s3'cret</snmpCommunityReadSetting>"
      "<snmpCommunityWriteSetting>\"s3cret\"</snmpCommunityWriteSetting>";
  EXPECT_THAT(Advice(children), Not(Contains(Field(&Finding::reason, HasSubstr("s3")))));
  EXPECT_THAT(Advice(children, true), Contains(Field(&Finding::reason, HasSubstr("s3'cret"))));
}

TEST(Advice, NeedsWellFormedXml) {
  EXPECT_THROW(Advise("<managedDevice>\n", "settings.xml", false), XmlError);
}

}  // namespace
}  // namespace devhost

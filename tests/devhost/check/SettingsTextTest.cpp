#include "devhost/check/SettingsText.h"

#include <gtest/gtest.h>

#include <sstream>

#include "config/ManagedSection.h"
#include "config/SectionWriter.h"
#include "devhost/check/ReadBack.h"

namespace devhost {
namespace {

// The lines of a text that are settings of the user's.
std::string SettingLines(const std::string& section) {
  std::istringstream lines(section);
  std::string found;
  for (std::string line; std::getline(lines, line);) {
    const ReadBack read = ReadLineBack(line);
    const bool isUsers = read.kind == ReadBack::Kind::Word || read.kind == ReadBack::Kind::Trap;
    found += isUsers && line.front() != '#' ? line + "\n" : "";
  }
  return found;
}

TEST(SettingsThatAreAdvisedOn, BecomeTheLinesThatTheAgentWrites) {
  managed_section::Settings settings;
  settings.communityRead = "two words";
  settings.communityWrite = "writer";
  settings.sysContact = "Ada, ground floor";
  settings.sysLocation = "Kitchen";
  settings.sysName = "box";
  settings.trapTargets = {{"192.0.2.5", "trap words", "162"}, {"nms.example", "", ""}, {"h", "c", ""}, {"", "", "9"}};
  const XmlElement root = ReadXml(
      "<managedDevice><snmpSysNameSetting>box</snmpSysNameSetting>"
      "<snmpCommunityReadSetting>two words</snmpCommunityReadSetting>"
      "<snmpCommunityWriteSetting>writer</snmpCommunityWriteSetting>"
      "<snmpSysContactSetting>Ada, ground floor</snmpSysContactSetting>"
      "<snmpSysLocationSetting>Kitchen</snmpSysLocationSetting><snmpTrapTargets>"
      "<trapTarget><target>192.0.2.5</target><community>trap words</community><port>162</port></trapTarget>"
      "<trapTarget><target>nms.example</target><community/><port/></trapTarget>"
      "<other><target>h</target><community>c</community></other><trapTarget><port>9</port></trapTarget>"
      "</snmpTrapTargets></managedDevice>");
  const std::string written = managed_section::Write(managed_section::FixedTexts(), settings, "now");
  EXPECT_EQ(RenderSettings(root).text, "# Halvoren Section Start\n" + SettingLines(written) + "# Halvoren Section End\n");
}

TEST(SettingsThatAreAdvisedOn, HaveNoLinesWhenTheyAreEmptyLikeThoseThatTheAgentWrites) {
  const std::string written = managed_section::Write(managed_section::FixedTexts(), {}, "now");
  EXPECT_EQ(RenderSettings(ReadXml("<any><snmpSysNameSetting/></any>")).text,
            "# Halvoren Section Start\n" + SettingLines(written) + "# Halvoren Section End\n");
}

TEST(SettingsThatAreAdvisedOn, AreFoundAgainByTheLineThatTheyBecome) {
  const SettingsText rendered =
      RenderSettings(ReadXml("<any>\n<snmpSysContactSetting>Ada\nsecond\nthird</snmpSysContactSetting>\n<snmpTrapTargets>\n"
                             "<trapTarget><target>h</target></trapTarget>\n</snmpTrapTargets>\n</any>"));
  EXPECT_EQ(rendered.OriginOf(1).setting, "");
  for (const std::size_t line : {2U, 3U, 4U}) {
    EXPECT_EQ(rendered.OriginOf(line).setting, "snmpSysContactSetting") << line;
    EXPECT_EQ(rendered.OriginOf(line).line, 2u) << line;
  }
  EXPECT_EQ(rendered.OriginOf(5).setting, "snmpTrapTargets");
  EXPECT_EQ(rendered.OriginOf(5).line, 6u);
  EXPECT_EQ(rendered.OriginOf(6).setting, "");
  ASSERT_EQ(rendered.lineBreakers.size(), 1u);
  EXPECT_EQ(rendered.lineBreakers[0].setting, "snmpSysContactSetting");
}

}  // namespace
}  // namespace devhost

#include <gmock/gmock.h>

#include <string>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;

using AdviseCommand = CommandsFixture;

TEST_F(AdviseCommand, SaysThatSaneSettingsHaveNoFindings) {
  const Outcome outcome =
      Run({"advise", File("settings.xml",
                          "<managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice>"
                          "<snmpEnabledSetting>true</snmpEnabledSetting>"
                          "<snmpCommunityReadSetting>reader</snmpCommunityReadSetting><snmpCommunityWriteSetting/>"
                          "<snmpSysContactSetting>Ada, ground floor</snmpSysContactSetting>"
                          "<snmpUsePrimaryContactSetting>false</snmpUsePrimaryContactSetting><snmpSysLocationSetting/>"
                          "<snmpUseProjectOwnerAddressSetting>0</snmpUseProjectOwnerAddressSetting>"
                          "<snmpSysNameSetting/><snmpUseRoomDeviceSetting>1</snmpUseRoomDeviceSetting>"
                          "<snmpTrapTargets/><deviceId>12</deviceId></managedDevice>")});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out, folder.Path("settings.xml") + ": no findings\n");
}

TEST_F(AdviseCommand, NamesTheElementAndItsLine) {
  const Outcome outcome =
      Run({"advise",
           File("settings.xml",
                "<managedDevice>\n  <snmpSysContactSetting>#1</snmpSysContactSetting>\n"
                "  <snmpCommunityReadSetting>it's</snmpCommunityReadSetting>\n<deviceId>12</deviceId></managedDevice>\n")});
  const std::string file = folder.Path("settings.xml");
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, HasSubstr(file + ":1: error: the element is the whole state of the device, and these settings "
                                            "are missing: snmpIsManagedDevice (the device is no longer managed), "));
  EXPECT_THAT(outcome.out,
              HasSubstr(file + ":2: error: snmpSysContactSetting: the daemon takes a value that begins with #"));
  EXPECT_THAT(outcome.out, HasSubstr(file + ":3: error: snmpCommunityReadSetting: a quote or a backslash in the community: "
                                            "the daemon answers to ***** instead of *****"));
  EXPECT_THAT(outcome.out, HasSubstr(file + ": 3 errors, 0 warnings\n"));
}

TEST_F(AdviseCommand, RefusesWhatIsNotXml) {
  const Outcome outcome = Run({"advise", File("settings.xml", "<managedDevice>\n<snmpSysNameSetting>\n</managedDevice>")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.errors, HasSubstr("devhost: " + folder.Path("settings.xml") + ":3:"));
  EXPECT_THAT(outcome.errors, HasSubstr("the settings are not well-formed XML: "));
}

TEST_F(AdviseCommand, RefusesAFileThatIsMissing) {
  const Outcome outcome = Run({"advise", folder.Path("missing")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, HasSubstr("devhost: cannot read "));
}

}  // namespace
}  // namespace devhost

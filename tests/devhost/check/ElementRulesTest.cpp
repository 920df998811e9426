#include "devhost/check/ElementRules.h"

#include <gmock/gmock.h>

#include "devhost/check/Advice.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::vector<Finding> JudgedElements(const std::string& children) {
  Report report("settings.xml", false);
  JudgeElements(ReadXml("<managedDevice>" + children + "</managedDevice>"), report);
  return report.Take();
}

auto Is(const std::string& rule, std::size_t line, const std::string& reason, const std::string& remedy) {
  return AllOf(Field(&Finding::rule, rule), Field(&Finding::severity, Severity::Error), Field(&Finding::line, line),
               Field(&Finding::reason, HasSubstr(reason)), Field(&Finding::remedy, remedy));
}

TEST(AMisspeltElement, IsFoundWithTheOneThatWasMeant) {
  EXPECT_THAT(
      JudgedElements("\n<snmpEnabledSeting>true</snmpEnabledSeting>\n<SNMPSysNameSetting/>\n<colour>s3cret</colour>"),
      ElementsAre(Is("element-ignored", 2, "snmpEnabledSeting: the agent does not know", "write snmpEnabledSetting"),
                  Is("element-ignored", 3, "SNMPSysNameSetting", "write snmpSysNameSetting"),
                  AllOf(Is("element-ignored", 4, "colour", "remove the element"),
                        Field(&Finding::reason, Not(HasSubstr("s3cret"))))));
}

TEST(AMisspeltElement, IsFoundInATrapTarget) {
  EXPECT_THAT(JudgedElements("<snmpTrapTargets><trapTarget><target>a</target><comunity>b</comunity></trapTarget>"
                             "</snmpTrapTargets>"),
              ElementsAre(Is("element-ignored", 1, "comunity", "write community")));
}

TEST(AnElementThatStandsTwice, IsFound) {
  EXPECT_THAT(JudgedElements("<deviceId>1</deviceId>\n<deviceId>2</deviceId>"),
              ElementsAre(Is("element-ignored", 2, "deviceId: the element stands here twice", "remove one of them")));
}

TEST(ASwitch, HasToBeOnOrOff) {
  for (const char* const good : {"true", "false", "1", "0"}) {
    EXPECT_THAT(JudgedElements("<snmpEnabledSetting>" + std::string(good) + "</snmpEnabledSetting>"), IsEmpty()) << good;
  }
  for (const char* const wrong : {"TRUE", "yes", "", " true", "2"}) {
    EXPECT_THAT(JudgedElements("<snmpEnabledSetting>" + std::string(wrong) + "</snmpEnabledSetting>"),
                ElementsAre(Is("switch-misread", 1, "takes it for false", "write true or false")))
        << wrong;
  }
}

TEST(SettingsThatAreMissing, AreNamedWithWhatBecomesOfThem) {
  const std::vector<Finding> findings =
      Advise("<managedDevice><snmpCommunityReadSetting>reader</snmpCommunityReadSetting></managedDevice>", "s.xml", false);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, "setting-missing");
  EXPECT_EQ(findings[0].severity, Severity::Error);
  EXPECT_THAT(findings[0].reason, AllOf(HasSubstr("snmpEnabledSetting (SNMP is switched off), "),
                                        HasSubstr("snmpTrapTargets (all trap targets are removed)"),
                                        Not(HasSubstr("snmpCommunityReadSetting")), Not(HasSubstr("snmpIsConfigDirty"))));
}

TEST(SettingsThatAreMissing, AreThoseThatTheDeviceHolds) {
  const std::set<std::string> held = {"snmpSysNameSetting"};
  const std::string settings = "<managedDevice><snmpCommunityReadSetting>reader</snmpCommunityReadSetting></managedDevice>";
  const std::vector<Finding> findings = Advise(settings, "s.xml", false, &held);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_THAT(findings[0].reason, testing::EndsWith("are missing: snmpSysNameSetting (emptied)"));
  const std::set<std::string> none;
  EXPECT_THAT(Advise(settings, "s.xml", false, &none), IsEmpty());
}

TEST(ADevice, HasToBeNamedByItsId) {
  const auto rules = [](const std::string& children) {
    std::vector<std::string> names;
    for (const Finding& finding : AdviseOnRequest("<managedDevice>" + children + "</managedDevice>", "s.xml", false)) {
      names.push_back(finding.rule + ":" + std::to_string(finding.line));
    }
    return names;
  };
  EXPECT_THAT(rules("\n<deviceId>12</deviceId>"), Not(Contains(StartsWith("device-id"))));
  EXPECT_THAT(rules(""), Contains("device-id:1"));
  EXPECT_THAT(rules("\n<deviceId>kitchen</deviceId>"), Contains("device-id:2"));
}

}  // namespace
}  // namespace devhost

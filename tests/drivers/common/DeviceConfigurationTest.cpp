#include "drivers/common/DeviceConfiguration.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/drivers/support/FakeHost.h"

namespace {

using drivers::DeviceConfiguration;
using drivers::ReadDeviceConfiguration;

std::string WrongWith(const std::string& xml) {
  DeviceConfiguration configuration;
  return ReadDeviceConfiguration(*ToNode(xml), configuration);
}

TEST(ADeviceConfiguration, NeedsAFolderOnly) {
  DeviceConfiguration configuration;
  EXPECT_EQ("", ReadDeviceConfiguration(*ToNode("<config folder='/d/kitchen'/>"), configuration));
  EXPECT_EQ("/d/kitchen", configuration.folder);
  EXPECT_EQ("1.0.0", configuration.version);
  EXPECT_TRUE(configuration.versionValid);
  EXPECT_EQ("", configuration.settings.sysName.Get());
  EXPECT_FALSE(configuration.settings.sysName.WasErased());
  EXPECT_TRUE(configuration.settings.trapTargets.Get().empty());
}

TEST(ADeviceConfiguration, GivesVersionSettingsAndTrapTargets) {
  DeviceConfiguration configuration;
  EXPECT_EQ("", ReadDeviceConfiguration(*ToNode("<config folder='/d' version='2.1 beta' versionValid='false'>"
                                                "<setting name='sysName' value='  my box '/>"
                                                "<trapTarget target='10.0.0.5' community='public' port='162'/>"
                                                "<setting name='managed' value='true'/>"
                                                "<setting name='sysContact' value=''/>"
                                                "<trapTarget target='10.0.0.6'/>"
                                                "</config>"),
                                        configuration));
  EXPECT_EQ("2.1 beta", configuration.version);
  EXPECT_FALSE(configuration.versionValid);
  EXPECT_EQ("  my box ", configuration.settings.sysName.Get());
  EXPECT_TRUE(configuration.settings.managed);
  EXPECT_FALSE(configuration.settings.sysContact.WasErased());
  const auto& targets = configuration.settings.trapTargets.Get();
  ASSERT_EQ(2U, targets.size());
  EXPECT_EQ("10.0.0.5 public 162", targets[0].target + " " + targets[0].community + " " + targets[0].port);
  EXPECT_EQ("10.0.0.6  ", targets[1].target + " " + targets[1].community + " " + targets[1].port);
}

TEST(ADeviceConfiguration, ReadsTheExampleOfItsPage) {
  std::ifstream page(DEVICE_DRIVERS_PAGE);
  const std::string text(std::istreambuf_iterator<char>(page), {});
  const std::string fence = "```xml\n";
  const std::size_t begin = text.find(fence);
  ASSERT_NE(std::string::npos, begin);
  const std::size_t end = text.find("```", begin + fence.size());
  DeviceConfiguration configuration;
  EXPECT_EQ("",
            ReadDeviceConfiguration(*ToNode(text.substr(begin + fence.size(), end - begin - fence.size())), configuration));
  EXPECT_EQ("/var/lib/project/kitchen", configuration.folder);
  EXPECT_EQ("1.2.0", configuration.version);
  EXPECT_TRUE(configuration.settings.managed);
  EXPECT_EQ("kitchen", configuration.settings.sysName.Get());
  EXPECT_EQ(2U, configuration.settings.trapTargets.Get().size());
}

TEST(AWrongDeviceConfiguration, IsReportedInOneLineThatSaysWhatIsAllowed) {
  EXPECT_EQ("folder is \"\"; give the absolute path of the folder that holds the device's snmpd.conf",
            WrongWith("<config/>"));
  EXPECT_EQ("folder is \"d\"; give the absolute path of the folder that holds the device's snmpd.conf",
            WrongWith("<config folder='d'/>"));
  EXPECT_EQ("versionValid is \"maybe\"; allowed are true and false",
            WrongWith("<config folder='/d' versionValid='maybe'/>"));
  EXPECT_EQ("the element settings is unknown; allowed are setting and trapTarget",
            WrongWith("<config folder='/d'><settings/></config>"));
  EXPECT_EQ("in a setting element, \"yes\" is not a value of the switch managed; allowed are true and false",
            WrongWith("<config folder='/d'><setting name='managed' value='yes'/></config>"));
  EXPECT_NE("", WrongWith("<config folder='/d'><setting value='x'/></config>"));
  EXPECT_NE("", WrongWith("<config folder='/d'><setting name='trapTargets' value='x'/></config>"));
  EXPECT_EQ(
      "the setting sysName is given twice; once is allowed",
      WrongWith("<config folder='/d'><setting name='sysName' value='a'/><setting name='sysName' value='a'/></config>"));
  EXPECT_EQ("a trapTarget element has no target; give target, and community and port where they are known",
            WrongWith("<config folder='/d'><trapTarget community='public'/></config>"));
  EXPECT_EQ("the element config holds the text \"box\"; put values into attributes",
            WrongWith("<config folder='/d'>box</config>"));
  EXPECT_EQ("the element setting holds the text \"box\"; put values into attributes",
            WrongWith("<config folder='/d'><setting name='sysName'>box</setting></config>"));
  EXPECT_EQ("the element setting holds elements; none are allowed there",
            WrongWith("<config folder='/d'><setting name='sysName'><value/></setting></config>"));
}

TEST(AWrongDeviceConfiguration, HasAMisspeltAttribute) {
  EXPECT_EQ("the attribute versionvalid is unknown; versionValid is likely meant",
            WrongWith("<config folder='/d' versionvalid='false'/>"));
  EXPECT_EQ("the attribute Folder is unknown; folder is likely meant", WrongWith("<config Folder='/d'/>"));
}

TEST(AWrongDeviceConfiguration, IsReportedByTheFirstThingThatIsWrong) {
  EXPECT_EQ("the element a is unknown; allowed are setting and trapTarget",
            WrongWith("<config folder='/d'><a/><setting name='sysName' value='x'/><b/></config>"));
}

}  // namespace

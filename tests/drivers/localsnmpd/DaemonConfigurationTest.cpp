#include "drivers/localsnmpd/DaemonConfiguration.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "host/H7XML.h"
#include "host/auto_com.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::DaemonConfiguration;

TEST(TheDaemonsConfiguration, HasAValueForEachAttributeThatIsMissing) {
  const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", std::string());
  DaemonConfiguration read;
  EXPECT_EQ("", drivers::ReadDaemonConfiguration(*config, read));
  EXPECT_EQ(0, read.port);
  EXPECT_EQ("", read.program);
  EXPECT_EQ(std::chrono::milliseconds(500), read.rebootPause);
  EXPECT_EQ(std::chrono::seconds(30), read.startDeadline);
}

TEST(TheDaemonsConfiguration, IsReadFromAttributes) {
  const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", std::string());
  config->SetNamedString("port", "1024");
  config->SetNamedString("program", "/opt/snmpd");
  config->SetNamedString("rebootPause", "0");
  config->SetNamedString("startDeadline", "600");
  DaemonConfiguration read;
  EXPECT_EQ("", drivers::ReadDaemonConfiguration(*config, read));
  EXPECT_EQ(1024, read.port);
  EXPECT_EQ("/opt/snmpd", read.program);
  EXPECT_EQ(std::chrono::milliseconds(0), read.rebootPause);
  EXPECT_EQ(std::chrono::seconds(600), read.startDeadline);
}

TEST(TheDaemonsConfiguration, SaysWhatIsWrongAndWhatIsAllowed) {
  struct Case {
    const char* name;
    const char* value;
    const char* allowed;
  };
  const Case cases[] = {
      {"port", "1023", "allowed are auto and whole numbers from 1024 to 65535"},
      {"port", "65536", "allowed are auto and whole numbers from 1024 to 65535"},
      {"port", "1024x", "allowed are auto and whole numbers from 1024 to 65535"},
      {"program", "snmpd", "give the absolute path of the daemon's program, or leave it out"},
      {"rebootPause", "-1", "allowed are whole numbers from 0 to 60000 (milliseconds)"},
      {"rebootPause", "60001", "allowed are whole numbers from 0 to 60000 (milliseconds)"},
      {"startDeadline", "0", "allowed are whole numbers from 1 to 600 (seconds)"},
      {"startDeadline", "601", "allowed are whole numbers from 1 to 600 (seconds)"},
  };
  for (const Case& each : cases) {
    const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", std::string());
    config->SetNamedString(each.name, each.value);
    DaemonConfiguration read;
    EXPECT_EQ(std::string(each.name) + " is \"" + each.value + "\"; " + each.allowed,
              drivers::ReadDaemonConfiguration(*config, read));
  }
}

TEST(TheDaemonsConfiguration, HasNoMisspeltAttributes) {
  const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", std::string());
  config->SetNamedString("startdeadline", "9");
  DaemonConfiguration read;
  EXPECT_EQ("the attribute startdeadline is unknown; startDeadline is likely meant",
            drivers::ReadDaemonConfiguration(*config, read));
}

TEST(TheDaemonsProgram, IsFoundOutsideOfThePathTooAndNeverBelowTheCurrentFolder) {
  const TemporaryFolder folder;
  folder.Write("snmpd", "#!/bin/sh\n");
  EXPECT_EQ("", drivers::FindDaemonProgram(folder.Path("snmpd")));
  ASSERT_EQ(0, ::chmod(folder.Path("snmpd").c_str(), 0755));
  EXPECT_EQ(folder.Path("snmpd"), drivers::FindDaemonProgram(folder.Path("snmpd")));
  EXPECT_EQ("", drivers::FindDaemonProgram(folder.Path()));
  const std::string former = ::getenv("PATH");
  const auto formerFolder = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  ::setenv("PATH", ".::/no/folder", 1);
  EXPECT_EQ("/usr/sbin/snmpd", drivers::FindDaemonProgram(""));
  ::setenv("PATH", ("/no/folder:" + folder.Path()).c_str(), 1);
  EXPECT_EQ(folder.Path("snmpd"), drivers::FindDaemonProgram(""));
  ::setenv("PATH", former.c_str(), 1);
  std::filesystem::current_path(formerFolder);
}

}  // namespace

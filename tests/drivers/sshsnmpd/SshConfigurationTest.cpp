#include "drivers/sshsnmpd/SshConfiguration.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <string>

#include "tests/drivers/support/FakeHost.h"

namespace {

using drivers::SshConfiguration;
using drivers::Words;

std::string Wrong(const std::string& attributes) {
  SshConfiguration configuration;
  return drivers::ReadSshConfiguration(*ToNode("<config " + attributes + "/>"), configuration);
}

std::string WrongBeside(const std::string& attribute) {
  return Wrong("host='h' user='u' knownHosts='/k' " + attribute);
}

TEST(AnSshConfiguration, NeedsHostAndUserAndHasDefaultsForTheRest) {
  SshConfiguration configuration;
  ::setenv("HOME", "/home/somebody", 1);
  EXPECT_EQ("", drivers::ReadSshConfiguration(*ToNode("<config host='kitchen.lan' user='root'/>"), configuration));
  EXPECT_EQ("kitchen.lan", configuration.server.host);
  EXPECT_EQ(22, configuration.server.port);
  EXPECT_EQ("/home/somebody/.ssh/known_hosts", configuration.server.knownHosts);
  EXPECT_EQ("root", configuration.login.user);
  EXPECT_EQ("", configuration.login.key);
  EXPECT_EQ("/etc/snmp/snmpd.conf", configuration.file);
  EXPECT_EQ(Words(), configuration.start);
  EXPECT_EQ(SshConfiguration::Sudo::No, configuration.sudo);
  EXPECT_EQ(std::chrono::seconds(10), configuration.connectTimeout);
  EXPECT_EQ(std::chrono::seconds(30), configuration.operationTimeout);
}

TEST(AnSshConfiguration, SaysEverythingElseInAttributes) {
  SshConfiguration configuration;
  EXPECT_EQ("", drivers::ReadSshConfiguration(
                    *ToNode("<config host='::1' port='2222' user='u' key='/k/id' knownHosts='/k/known' file='/x/snmpd.conf' "
                            "start='systemctl start snmpd' stop='systemctl  stop snmpd' restart='r' reboot='/sbin/reboot' "
                            "sudo='all' connectTimeout='3' operationTimeout='600'/>"),
                    configuration));
  EXPECT_EQ("::1", configuration.server.host);
  EXPECT_EQ(2222, configuration.server.port);
  EXPECT_EQ("/k/known", configuration.server.knownHosts);
  EXPECT_EQ("/k/id", configuration.login.key);
  EXPECT_EQ("/x/snmpd.conf", configuration.file);
  EXPECT_EQ((Words{"systemctl", "start", "snmpd"}), configuration.start);
  EXPECT_EQ((Words{"systemctl", "stop", "snmpd"}), configuration.stop);
  EXPECT_EQ(Words{"r"}, configuration.restart);
  EXPECT_EQ(Words{"/sbin/reboot"}, configuration.reboot);
  EXPECT_EQ(SshConfiguration::Sudo::All, configuration.sudo);
  EXPECT_EQ(std::chrono::seconds(3), configuration.connectTimeout);
  EXPECT_EQ(std::chrono::seconds(600), configuration.operationTimeout);
}

TEST(AnSshConfiguration, ThatIsWrongSaysWhatIsAllowed) {
  EXPECT_EQ("", WrongBeside(""));
  EXPECT_EQ("the attribute keyFile is unknown; key is likely meant", WrongBeside("keyFile='/k'"));
  EXPECT_EQ("the attribute connecttimeout is unknown; connectTimeout is likely meant", WrongBeside("connecttimeout='5'"));
  EXPECT_EQ("the attribute Host is unknown; host is likely meant", Wrong("Host='h' user='u'"));
  EXPECT_EQ("host is \"\"; give the name or the address of the controller", Wrong("user='u'"));
  EXPECT_EQ("user is \"\"; give the name of the account on the controller", Wrong("host='h' knownHosts='/k'"));
  EXPECT_EQ("host is \"-oProxy\"; give the name or the address of the controller", Wrong("host='-oProxy' user='u'"));
  EXPECT_EQ("host is \"a@b\"; give the name or the address of the controller", Wrong("host='a@b' user='u'"));
  EXPECT_EQ("port is \"0\"; allowed are whole numbers from 1 to 65535", WrongBeside("port='0'"));
  EXPECT_EQ("port is \"22x\"; allowed are whole numbers from 1 to 65535", WrongBeside("port='22x'"));
  EXPECT_EQ("knownHosts is \"k\"; give the absolute path of the file, or leave it out",
            Wrong("host='h' user='u' knownHosts='k'"));
  EXPECT_EQ("key is not a path; give the absolute path of a private key, or leave it out for the SSH agent's keys",
            WrongBeside("key='id'"));
  const std::string path = "; give the absolute path of snmpd.conf on the controller";
  EXPECT_EQ("file is \"snmpd.conf\"" + path, WrongBeside("file='snmpd.conf'"));
  EXPECT_EQ("file is \"/etc/snmp/\"" + path, WrongBeside("file='/etc/snmp/'"));
  EXPECT_EQ("file is \"/a\nb\"" + path, WrongBeside("file='/a&#10;b'"));
  EXPECT_EQ("sudo is \"yes\"; allowed are no, commands and all", WrongBeside("sudo='yes'"));
  EXPECT_EQ("connectTimeout is \"601\"; allowed are whole numbers from 1 to 600 (seconds)",
            WrongBeside("connectTimeout='601'"));
  EXPECT_EQ("operationTimeout is \"0\"; allowed are whole numbers from 1 to 3600 (seconds)",
            WrongBeside("operationTimeout='0'"));
}

TEST(AnSshConfiguration, RefusesWhatOnlyAShellWouldUnderstand) {
  for (const char* const name : {"start", "stop", "restart", "reboot"}) {
    for (const char* const command : {"a; b", "a | b", "a > b", "a \"b c\"", "$(a)", "`a`", "a &amp;", "a*", "a\\ b"}) {
      EXPECT_NE("", WrongBeside(std::string(name) + "='" + command + "'")) << command;
    }
  }
  EXPECT_EQ(0U, WrongBeside("stop='a;b'").find("stop is \"a;b\"; give words of letters, digits and "));
}

TEST(AnSshConfiguration, NeedsAKnownHostsFileWhereThereIsNoHome) {
  ::unsetenv("HOME");
  EXPECT_EQ("knownHosts is missing, and the host's environment names no home folder; give the absolute path of the file",
            Wrong("host='h' user='u'"));
  EXPECT_EQ("", WrongBeside(""));
  ::setenv("HOME", "/", 1);
}

}  // namespace

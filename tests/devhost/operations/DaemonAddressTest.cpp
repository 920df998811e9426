#include "devhost/operations/DaemonAddress.h"

#include <gmock/gmock.h>

#include "devhost/snmp/SnmpClient.h"

namespace devhost {
namespace {

using testing::HasSubstr;

DaemonAddress Find(const std::string& module, const std::string& attributes, const std::string& file = "") {
  return FindDaemonAddress({12, "kitchen", "/modules/" + module, "<config " + attributes + "/>"}, file);
}

std::string OnHost(const std::string& file) {
  const DaemonAddress found = Find("ssh_snmpd.so", "host='192.0.2.5' port='22'", file);
  return found.udp ? TextOf(*found.udp) + (found.remark.empty() ? "" : " (" + found.remark + ")") : found.remark;
}

TEST(TheDaemonOfALocalDevice, IsOnThePortOfTheProject) {
  const DaemonAddress found = Find("local_snmpd.so", "folder='/kitchen' port='40161'");
  EXPECT_EQ(TextOf(found.udp.value()), "127.0.0.1:40161");
  EXPECT_TRUE(found.hasOwnAgentX);
}

TEST(TheDaemonOfALocalDevice, IsNowhereWithoutAPort) {
  for (const char* attributes : {"folder='/kitchen'", "folder='/kitchen' port='auto'"}) {
    const DaemonAddress found = Find("local_snmpd.so", attributes);
    EXPECT_FALSE(found.udp.has_value());
    EXPECT_THAT(found.remark, HasSubstr("give one with port=\"...\" in the project"));
  }
}

TEST(TheDaemonOfAHost, IsOnTheUsualPort) {
  EXPECT_EQ(OnHost(""), "192.0.2.5:161");
  EXPECT_EQ(TextOf(Find("other.so", "host='::1'").udp.value()), "[::1]:161");
  EXPECT_FALSE(Find("other.so", "host='kitchen'").hasOwnAgentX);
}

TEST(TheDaemonOfAHost, IsOnThePortOfItsFile) {
  EXPECT_EQ(OnHost("agentaddress 1161\n"), "192.0.2.5:1161");
  EXPECT_EQ(OnHost("agentaddress  tcp:161, udp:1161\n"), "192.0.2.5:1161");
  EXPECT_EQ(OnHost("agentAddress 127.0.0.1:7161,192.0.2.5:1161,192.0.2.5:2161\n"), "192.0.2.5:1161");
}

TEST(TheDaemonOfAHost, MayListenOnItsOwnMachineAlone) {
  EXPECT_EQ(
      OnHost("# Debian\nagentaddress  127.0.0.1,[::1]\n"),
      "192.0.2.5:161 (line 2 of its file has the daemon listen on its own machine alone (agentaddress), where it cannot "
      "be asked from here)");
  EXPECT_TRUE(Find("ssh_snmpd.so", "host='kitchen'", "agentaddress 127.0.0.1\n").isOutOfReach);
}

TEST(TheDaemonOfAHost, IsAskedThereWhereThatIsThisMachine) {
  const DaemonAddress found =
      Find("ssh_snmpd.so", "host='localhost' port='22'", "agentaddress tcp:127.0.0.1:705,127.0.0.1:1161,[::1]:2161\n");
  EXPECT_EQ(TextOf(found.udp.value()), "localhost:1161");
  EXPECT_FALSE(found.isOutOfReach);
  EXPECT_EQ(found.remark, "");
}

TEST(TheDaemonOfAFile, IsOnThisMachineWhereTheFileSays) {
  const auto where = [](const std::string& file) { return TextOf(AddressOfFile(file).udp.value()); };
  EXPECT_EQ(where(""), "127.0.0.1:161");
  EXPECT_EQ(where("agentaddress  127.0.0.1,[::1]\n"), "127.0.0.1:161");
  EXPECT_EQ(where("agentaddress udp:1161\n"), "127.0.0.1:1161");
  EXPECT_EQ(where("agentaddress tcp:161,192.0.2.5:1161,127.0.0.1\n"), "192.0.2.5:1161");
  EXPECT_EQ(where("agentaddress [::]:1161\n"), "[::1]:1161");
  EXPECT_FALSE(AddressOfFile("").hasOwnAgentX);
}

TEST(ADeviceWithoutADaemon, HasNothingToAsk) {
  const DaemonAddress found = Find("simulated_device.so", "folder='/kitchen'");
  EXPECT_FALSE(found.udp.has_value());
  EXPECT_EQ(found.remark, "nothing to ask: the project gives kitchen no daemon");
}

TEST(AnAddressOfACommandLine, IsReadOrRefused) {
  EXPECT_EQ(TextOf(ReadDaemonAddress("kitchen")), "kitchen:161");
  EXPECT_THROW(ReadDaemonAddress("tcp:kitchen:161"), SnmpError);
}

}  // namespace
}  // namespace devhost

#ifndef TESTS_DEVHOST_COMMANDS_DEVICE_FIXTURE_H
#define TESTS_DEVHOST_COMMANDS_DEVICE_FIXTURE_H

#include <string>
#include <vector>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {

// A project with a device that has been called kitchen, then attic, by two changes.
class DeviceFixture : public CommandsFixture {
 protected:
  DeviceFixture() {
    Name("kitchen");
    Name("attic");
  }

  // Runs a command about the device.
  Outcome Do(const std::string& command, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {command, "--module-dir", MODULE_FOLDER, "--project", project, "kitchen"};
    words.insert(words.end(), more.begin(), more.end());
    return Run(words);
  }

  void Name(const std::string& name) const {
    const std::string settings = File(
        "settings.xml", "<managedDevice><snmpCommunityReadSetting>hidden</snmpCommunityReadSetting><snmpSysNameSetting>" +
                            name + "</snmpSysNameSetting><deviceId>12</deviceId></managedDevice>");
    EXPECT_EQ(Do("apply", {settings, "--yes"}).status, ExitStatus::Good);
  }

  std::string Conf() const { return folder.Read("kitchen/snmpd.conf"); }

  const std::string conf = File("kitchen/snmpd.conf", "# by hand\n");
  const std::string project =
      File("project.xml",
           "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' name='kitchen' "
           "module='simulated_device.so'><config folder='{project}/kitchen'/></driver></project>");
};

}  // namespace devhost

#endif

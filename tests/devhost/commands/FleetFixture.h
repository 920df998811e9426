#ifndef TESTS_DEVHOST_COMMANDS_FLEET_FIXTURE_H
#define TESTS_DEVHOST_COMMANDS_FLEET_FIXTURE_H

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <string>
#include <vector>

#include "devhost/system/RunProgram.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

inline constexpr int kDevices = 5;
// A whole fleet on a busy machine, under sanitizers.
inline constexpr std::chrono::minutes kPatience{10};

// Two projects with simulated devices: four in a house, one in a barn.
class AFleetOfDevices : public testing::Test {
 protected:
  AFleetOfDevices() {
    std::string house = Driver(1, "agent", "snmp_configuration_agent.so");
    for (int id = 11; id != 11 + kDevices - 1; ++id) {
      house += Device(id);
    }
    folder.Write("house.xml", "<project>" + house + "</project>");
    folder.Write("barn.xml", "<project>" + Driver(1, "agent", "snmp_configuration_agent.so") + Device(15) + "</project>");
    SetName("first");
    folder.Write("fleet.xml",
                 "<fleet settings='settings.xml'><project file='house.xml'/><project file='barn.xml'/></fleet>");
  }

  static std::string Driver(int id, const std::string& name, const std::string& module, const std::string& config = "") {
    return "<driver id='" + std::to_string(id) + "' name='" + name + "' module='" + module + "'>" + config + "</driver>";
  }
  std::string Device(int id) const {
    const std::string name = "d" + std::to_string(id);
    folder.Write(name + "/snmpd.conf", "# by hand\n");
    ::chmod(folder.Path(name + "/snmpd.conf").c_str(), 0600);
    return Driver(id, name, "simulated_device.so", "<config folder='{project}/" + name + "'/>");
  }
  void SetName(const std::string& name) const {
    folder.Write("settings.xml",
                 "<managedDevice><snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting>"
                 "<snmpSysNameSetting>" +
                     name + "</snmpSysNameSetting><deviceId>{deviceId}</deviceId></managedDevice>");
  }
  // The device does what it should not.
  void Break(int id, const std::string& module) const {
    const std::string house = folder.Read("house.xml");
    const std::string name = "name='d" + std::to_string(id) + "' module='";
    const std::size_t at = house.find(name) + name.size();
    folder.Write("house.xml", house.substr(0, at) + module + house.substr(house.find('\'', at)));
  }

  ProgramResult Fleet(std::vector<std::string> words) const {
    words.insert(words.begin(), {DEVHOST_PROGRAM, "fleet"});
    ProgramRun run;
    run.deadline = kPatience;
    run.words = words;
    run.folder = folder.Path();
    return RunProgram(run);
  }
  std::string Conf(int id) const { return folder.Read("d" + std::to_string(id) + "/snmpd.conf"); }

  const testsupport::ScratchFolder folder;
};

}  // namespace devhost

#endif

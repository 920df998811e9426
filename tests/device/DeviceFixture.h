#ifndef TESTS_DEVICE_DEVICE_FIXTURE_H
#define TESTS_DEVICE_DEVICE_FIXTURE_H

#include <string>
#include <vector>

#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

// An agent with its commands registered. The tests add devices.
class DeviceTest : public AgentTest {
 protected:
  using RecordingDevice = testsupport::RecordingDevice;

  void SetUp() override {
    agent.Driver().RegisterCommands();
    journal.Take();
  }

  void Announce(unsigned long deviceId, RecordingDevice& device) {
    agent->AddSNMPDevice(deviceId, &device);
    journal.Take();
  }

  // Returns the settings element of a device that holds nothing.
  static std::string EmptyElement(const std::string& deviceId) {
    return "<managedDevice><snmpIsManagedDevice>false</snmpIsManagedDevice><snmpIsConfigDirty>false</snmpIsConfigDirty>"
           "<snmpEnabledSetting>false</snmpEnabledSetting><snmpCommunityReadSetting/><snmpCommunityWriteSetting/>"
           "<snmpSysContactSetting/><snmpUsePrimaryContactSetting>false</snmpUsePrimaryContactSetting>"
           "<snmpSysLocationSetting/><snmpUseProjectOwnerAddressSetting>false</snmpUseProjectOwnerAddressSetting>"
           "<snmpSysNameSetting/><snmpUseRoomDeviceSetting>false</snmpUseRoomDeviceSetting><snmpTrapTargets/>"
           "<deviceId>" +
           deviceId + "</deviceId></managedDevice>";
  }

  // Returns the calls to the device when its settings element is written.
  static Calls ElementCalls(const std::string& id) {
    Calls calls;
    for (const char* getter :
         {"GetIsManagedDevice", "GetIsConfigDirty", "GetEnabledSetting", "GetCommunityReadSetting",
          "GetCommunityWriteSetting", "GetSysContactSetting", "GetUsePrimaryContactSetting", "GetSysLocationSetting",
          "GetUseProjectOwnerAddressSetting", "GetSysNameSetting", "GetUseRoomDeviceSetting", "GetTrapTargetsSetting"}) {
      calls.push_back(id + '.' + getter);
    }
    return calls;
  }

  // Returns, in any order, the calls to the device before CopyTo when its managed section is written.
  static Calls SectionCalls(const std::string& id) {
    return {id + ".GetCommunityReadSetting", id + ".GetCommunityWriteSetting", id + ".GetSysContactSetting",
            id + ".GetSysLocationSetting",   id + ".GetSysNameSetting",        id + ".GetTrapTargetsSetting"};
  }

  static void Append(Calls& calls, const Calls& more) { calls.insert(calls.end(), more.begin(), more.end()); }
};

#endif

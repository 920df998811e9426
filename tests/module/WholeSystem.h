#ifndef TESTS_MODULE_WHOLE_SYSTEM_H
#define TESTS_MODULE_WHOLE_SYSTEM_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "devhost/engine/Host.h"
#include "devhost/xml/XmlObserver.h"
#include "tests/devhost/support/RecordingObserver.h"
#include "tests/support/ScratchFolder.h"

// The built modules in a development host: the agent as driver 1, two simulated devices with real files as 12 and 7.
class AWholeSystem : public testing::Test {
 protected:
  static constexpr unsigned long kAgent = 1;
  static constexpr unsigned long kKitchen = 12;
  static constexpr unsigned long kBath = 7;

  AWholeSystem() {
    folder.Write("kitchen/snmpd.conf", "# kitchen, by hand\n");
    folder.Write("bath/snmpd.conf", "# bath, by hand\n");
  }
  ~AWholeSystem() override {
    if (host) {
      host->Stop();
      EXPECT_EQ(host->MannersCount(), 0U) << testing::PrintToString(observer.Texts(devhost::Occurrence::Kind::Manners));
    }
    host.reset();
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  }

  void LoadAgent() { Load(kAgent, "agent", AGENT_MODULE, "<config/>"); }
  void LoadDevices() {
    LoadDevice(kKitchen, "kitchen");
    LoadDevice(kBath, "bath");
  }
  void LoadDevice(unsigned long id, const std::string& name) {
    Load(id, name, SIMULATED_DEVICE_MODULE,
         "<config folder='" + folder.Path(name) + "' version='1.2.0' versionValid='true'/>");
  }

  // Returns the settings of a device, as the tool sends them.
  static std::string Settings(unsigned long id, const std::string& sysName) {
    return "<managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice>"
           "<snmpCommunityReadSetting>public</snmpCommunityReadSetting>"
           "<snmpSysContactSetting>Ada Lovelace</snmpSysContactSetting><snmpSysNameSetting>" +
           sysName +
           "</snmpSysNameSetting><snmpTrapTargets><trapTarget><target>10.0.0.5</target><community>two words</community>"
           "<port>162</port></trapTarget></snmpTrapTargets><deviceId>" +
           std::to_string(id) + "</deviceId></managedDevice>";
  }
  std::string SetState(unsigned long id, const std::string& sysName = "box") {
    return host->Command(kAgent, "SetDeviceState", {{"xml", Settings(id, sysName)}});
  }
  std::string Fail(unsigned long id, const std::string& operation, const std::string& status) {
    return host->Command(id, "FailOperation", {{"operation", operation}, {"status", status}});
  }

  // Returns the notifications so far, and forgets them.
  std::vector<std::string> Notifications() {
    std::vector<std::string> texts = observer.Texts(devhost::Occurrence::Kind::Notification);
    observer.all.clear();
    return texts;
  }

  testsupport::ScratchFolder folder;
  RecordingObserver observer;
  std::unique_ptr<devhost::Host> host = std::make_unique<devhost::Host>(observer);

 private:
  void Load(unsigned long id, const std::string& name, const std::string& module, const std::string& config) {
    devhost::DriverEntry entry;
    entry.id = id;
    entry.name = name;
    entry.module = module;
    entry.configXml = config;
    host->Load(entry);
  }
};

#endif

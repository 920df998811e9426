#ifndef TESTS_DEVHOST_OPERATIONS_KITCHEN_H
#define TESTS_DEVHOST_OPERATIONS_KITCHEN_H

#include <gtest/gtest.h>

#include <string>

#include "devhost/engine/Host.h"
#include "devhost/operations/Apply.h"
#include "devhost/state/StateFolder.h"
#include "tests/devhost/support/RecordingObserver.h"
#include "tests/devhost/support/WholeSettings.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

inline constexpr std::int64_t kNow = 1790000000;

// A device with a file, in a project with the built modules.
class AKitchen : public testing::Test {
 protected:
  AKitchen() {
    folder.Write("kitchen/snmpd.conf", "# by hand\n");
    change.target.chosen.agent = {1, "agent", Module("snmp_configuration_agent"), "<config/>"};
    SetDevice("simulated_device");
    change.target.snapshotFolder = folder.Path("snapshots");
    SetSettings(
        "<snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting><snmpSysNameSetting>kitchen</snmpSysNameSetting>");
  }

  static std::string Module(const std::string& name) { return std::string(MODULE_FOLDER) + "/" + name + ".so"; }
  void SetDevice(const std::string& module, const std::string& inside = "") {
    change.target.chosen.device = {12, "kitchen", Module(module),
                                   "<config folder='" + folder.Path("kitchen") + "'>" + inside + "</config>"};
  }
  // All others are empty or off.
  void SetSettings(const std::string& settings) { SetElement(WholeSettings(settings)); }
  void SetElement(const std::string& settings) {
    change.settings = {"s.xml", "<managedDevice>" + settings + "<deviceId>12</deviceId></managedDevice>"};
  }
  void KeepStates() { change.target.stateFolder = folder.Path("states"); }
  // Of a device that keeps what it knows: from now on it cannot be reached.
  void GoOffLine() {
    KeepStates();
    RecordingObserver observer;
    StateFolder states(change.target.stateFolder);
    Host host(observer, &states);
    host.Load(change.target.chosen.agent);
    host.Load(change.target.chosen.device);
    host.Command(1, "GetDeviceList", {});
    host.Command(12, "SetOnline", {{"online", "false"}});
    host.Stop();
  }
  std::string File() const { return folder.Read("kitchen/snmpd.conf"); }
  std::vector<Snapshot> Snapshots() const { return ReadSnapshots(change.target.snapshotFolder, 12).snapshots; }

  Applied ApplyNow(std::int64_t time = kNow) const { return ApplyChange(change, PlanChange(change), time); }

  const testsupport::ScratchFolder folder;
  Change change;
};

}  // namespace devhost

#endif

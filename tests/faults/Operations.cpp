#include "tests/faults/Operations.h"

#include <stdexcept>

#include "agent/ISNMPConfigurationAgent.h"

namespace faults {
namespace {

using Parameters = RecordingHost::Parameters;

const char kSettings[] =
    "<managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice><snmpEnabledSetting>true</snmpEnabledSetting>"
    "<snmpCommunityReadSetting>the new read community</snmpCommunityReadSetting>"
    "<snmpCommunityWriteSetting>the new write community</snmpCommunityWriteSetting>"
    "<snmpSysContactSetting/><snmpUsePrimaryContactSetting>false</snmpUsePrimaryContactSetting>"
    "<snmpSysLocationSetting>the new location of it</snmpSysLocationSetting>"
    "<snmpUseProjectOwnerAddressSetting>true</snmpUseProjectOwnerAddressSetting>"
    "<snmpSysNameSetting>the new name of the device</snmpSysNameSetting>"
    "<snmpUseRoomDeviceSetting>false</snmpUseRoomDeviceSetting><snmpTrapTargets>"
    "<trapTarget><target>the-new-first-target</target><community>the new trap community</community><port>162</port>"
    "</trapTarget><trapTarget><target>the-new-second-target</target><community/><port/></trapTarget></snmpTrapTargets>"
    "<deviceId>5</deviceId></managedDevice>";

void Command(World& world, const char* name, const Parameters& parameters) {
  world.reply = world.host.Command(name, parameters);
}

void ChangeSettings(World& world) {
  Command(world, "SetDeviceState", {{"xml", kSettings}});
}

void Event(World& world, const char* name, const Parameters& parameters) {
  world.host.SendEvent(name, parameters);
}

using W = World;
constexpr Stage kNone = Stage::NoAgent;
constexpr Stage kMade = Stage::Constructed;
constexpr Stage kRuns = Stage::Running;
constexpr Passes kOut = Passes::Through;
constexpr Passes kNever = Passes::Never;

const std::vector<Operation> kOperations = {
    // Life.
    {"Create", kNone, kOut, [](W& w) { w.agent = std::make_unique<HostedAgent>(w.host); }},
    {"RegisterCommands", kMade, kOut, [](W& w) { w.RegisterCommands(); }},
    {"Initialize", kMade, kOut, [](W& w) { w.answer = w.Agent().Initialize(); }},
    {"InitializeWithAState", kMade, kOut, [](W& w) { w.answer = w.Agent().Initialize(w.persisted.Get()); }},
    {"InitializeAgain", kRuns, kOut, [](W& w) { w.answer = w.Agent().Initialize(w.persisted.Get()); }},
    {"GetPersistState", kRuns, kOut, [](W& w) { w.reply = w.Agent().Driver().GetPersistState(0); }},
    {"Destroy", kRuns, kNever, [](W& w) { w.agent.reset(); }},
    {"DestroyBeforeInitialize", kMade, kNever, [](W& w) { w.agent.reset(); }},
    // The commands of the configuration tool.
    {"GetDeviceList", kRuns, kOut, [](W& w) { Command(w, "GetDeviceList", {}); }},
    {"SetDeviceStateCommand", kRuns, kOut, ChangeSettings},
    {"SetDeviceStateThatCannotRead", kRuns, kOut,
     [](W& w) {
       w.Device(5).copyFrom.always = 1;
       ChangeSettings(w);
     }},
    {"SetDeviceStateThatCannotWrite", kRuns, kOut,
     [](W& w) {
       w.Device(5).copyTo.always = 1;
       ChangeSettings(w);
     }},
    {"SetDeviceStateOfNonsense", kRuns, kOut,
     [](W& w) {
       Command(w, "SetDeviceState", {{"xml", "<not closed and rather long"}});
     }},
    {"AddManagedDevice", kRuns, kOut,
     [](W& w) {
       Command(w, "AddManagedDevice", {{"deviceId", "7"}});
     }},
    {"AddManagedDeviceThatIsUnknown", kRuns, kOut,
     [](W& w) {
       Command(w, "AddManagedDevice", {{"deviceId", "99"}});
     }},
    {"DeleteManagedDevice", kRuns, kOut,
     [](W& w) {
       Command(w, "DeleteManagedDevice", {{"deviceId", "5"}});
     }},
    {"RebootController", kRuns, kOut,
     [](W& w) {
       Command(w, "RebootController", {{"deviceId", "5"}});
     }},
    {"StopMasterAgent", kRuns, kOut,
     [](W& w) {
       Command(w, "StopMasterAgent", {{"deviceId", "5"}});
     }},
    {"StartMasterAgent", kRuns, kOut,
     [](W& w) {
       Command(w, "StartMasterAgent", {{"deviceId", "5"}});
     }},
    // Calls of device drivers.
    {"AddSNMPDevice", kRuns, kOut, [](W& w) { w.Announce(4); }},
    {"AddSNMPDeviceAgain", kRuns, kOut, [](W& w) { w.Published().AddSNMPDevice(5, &w.Device(4)); }},
    {"AddSNMPDeviceThatIsNull", kRuns, kNever, [](W& w) { w.Agent()->AddSNMPDevice(4, nullptr); }},
    {"DeleteSNMPDevice", kRuns, kOut, [](W& w) { w.Published().DeleteSNMPDevice(5); }},
    {"DeleteSNMPDeviceThatIsUnknown", kRuns, kOut, [](W& w) { w.Published().DeleteSNMPDevice(99); }},
    {"SetDeviceState", kRuns, kOut, [](W& w) { w.answer = w.Published().SetDeviceState(7); }},
    // The host's events.
    {"OnProjectLoaded", kRuns, kOut, [](W& w) { Event(w, "OnProjectLoaded", {}); }},
    {"OnVariableAdded", kRuns, kOut,
     [](W& w) {
       Event(w, "OnVariableAdded", {{"iddevice", "5"}, {"idvariable", "4"}});
     }},
    {"OnUserVariableAdded", kRuns, kOut,
     [](W& w) {
       Event(w, "OnUserVariableAdded", {{"iddevice", "5"}, {"idvariable", "4"}});
     }},
    {"OnVariableRemoved", kRuns, kOut,
     [](W& w) {
       Event(w, "OnVariableRemoved", {{"iddevice", "5"}, {"idvariable", "2"}});
     }},
    {"OnItemRemoved", kRuns, kOut,
     [](W& w) {
       Event(w, "OnItemRemoved", {{"iditem", "5"}, {"idroom", "3"}});
     }},
};

}  // namespace

const std::vector<Operation>& Operations() {
  return kOperations;
}

const Operation& OperationOf(const std::string& name) {
  for (const Operation& operation : kOperations) {
    if (operation.name == name) {
      return operation;
    }
  }
  throw std::out_of_range("no operation is named " + name);
}

}  // namespace faults

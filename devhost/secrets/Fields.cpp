#include "devhost/secrets/Fields.h"

#include <algorithm>
#include <unordered_map>

#include "devhost/snmpd/NearName.h"

namespace devhost {

Field FindField(std::string_view name) {
  static const std::unordered_map<std::string_view, Field> kFields = {
      // Settings that the tool and the agent exchange.
      {"managedDevices", Field::Part},
      {"managedDevice", Field::Part},
      {"snmpIsManagedDevice", Field::Switch},
      {"snmpIsConfigDirty", Field::Switch},
      {"snmpEnabledSetting", Field::Switch},
      {"snmpCommunityReadSetting", Field::Secret},
      {"snmpCommunityWriteSetting", Field::Secret},
      {"snmpSysContactSetting", Field::Shown},
      {"snmpUsePrimaryContactSetting", Field::Switch},
      {"snmpSysLocationSetting", Field::Shown},
      {"snmpUseProjectOwnerAddressSetting", Field::Switch},
      {"snmpSysNameSetting", Field::Shown},
      {"snmpUseRoomDeviceSetting", Field::Switch},
      {"snmpTrapTargets", Field::Part},
      {"trapTarget", Field::Part},
      {"target", Field::Address},
      {"community", Field::Secret},
      {"port", Field::Port},
      {"deviceId", Field::Switch},
      {"id", Field::Switch},
      // Replies and notifications.
      {"Success", Field::Part},
      {"Fail", Field::FreeText},
      {"ReadFail", Field::Part},
      {"WriteFail", Field::Part},
      {"DeviceAdded", Field::Part},
      {"DeviceDeleted", Field::Part},
      {"ManagedDeviceAdded", Field::Part},
      {"ManagedDeviceDeleted", Field::Part},
      {"DeviceChanged", Field::Part},
      // What device drivers answer and are asked.
      {"settings", Field::Part},
      {"setting", Field::Part},
      {"name", Field::Name},
      {"value", Field::Value},
      {"erased", Field::Switch},
      {"filePath", Field::Shown},
      {"counts", Field::Part},
      {"count", Field::Part},
      {"operation", Field::Operation},
      {"status", Field::Switch},
      {"times", Field::Switch},
      {"daemon", Field::Part},
      {"running", Field::Switch},
      {"pid", Field::Switch},
      {"address", Field::Shown},
      {"online", Field::Switch},
      {"controller", Field::Part},
      {"hostKey", Field::Part},
      {"type", Field::Shown},
      {"fingerprint", Field::Shown},
      {"state", Field::Shown},
      // Their configuration.
      {"config", Field::Part},
      {"folder", Field::Shown},
      {"program", Field::Shown},
      {"version", Field::Shown},
      {"versionValid", Field::Switch},
      {"rebootPause", Field::Switch},
      {"startDeadline", Field::Switch},
      {"host", Field::Shown},
      {"user", Field::Shown},
      {"knownHosts", Field::Shown},
      {"file", Field::Shown},
      {"connectTimeout", Field::Switch},
      {"operationTimeout", Field::Switch},
      // States. What is pending is a switch of a daemon, too, which has no lines.
      {"LocalSnmpd", Field::Part},
      {"SshSnmpd", Field::Part},
      {"known", Field::Config},
      {"pending", Field::Config},
      {"base", Field::Config},
      {"SNMPState", Field::Part},
      {"variables", Field::Part},
      {"variable", Field::Part},
      {"deviceid", Field::Switch},
      {"variableid", Field::Switch},
      {"snmpTrapEnabled", Field::Switch},
      // Events.
      {"iddevice", Field::Switch},
      {"idvariable", Field::Switch},
      {"iditem", Field::Switch},
      {"idroom", Field::Switch}};
  const auto found = kFields.find(name);
  return found == kFields.end() ? Field::Unknown : found->second;
}

bool IsOperation(std::string_view name) {
  constexpr std::string_view kOperations[] = {"CopyFrom", "CopyTo", "RebootController", "StopMasterAgent",
                                              "StartMasterAgent"};
  return std::find(std::begin(kOperations), std::end(kOperations), name) != std::end(kOperations);
}

namespace {

const std::unordered_map<std::string_view, Setting>& Settings() {
  static const std::unordered_map<std::string_view, Setting> kSettings = {{"managed", Setting::Switch},
                                                                          {"configDirty", Setting::Switch},
                                                                          {"enabled", Setting::Switch},
                                                                          {"communityRead", Setting::Secret},
                                                                          {"communityWrite", Setting::Secret},
                                                                          {"sysContact", Setting::Shown},
                                                                          {"usePrimaryContact", Setting::Switch},
                                                                          {"sysLocation", Setting::Shown},
                                                                          {"useProjectOwnerAddress", Setting::Switch},
                                                                          {"sysName", Setting::Shown},
                                                                          {"useRoomDevice", Setting::Switch},
                                                                          {"trapTargets", Setting::Switch}};
  return kSettings;
}

}  // namespace

Setting FindSetting(std::string_view name) {
  const auto found = Settings().find(name);
  return found == Settings().end() ? Setting::Unknown : found->second;
}

bool IsNearSetting(std::string_view name) {
  const NearName meant(name);
  return std::any_of(Settings().begin(), Settings().end(), [&meant](const auto& setting) {
    return meant.DistanceTo(NearName(setting.first).Text()) != NearName::kFar;
  });
}

}  // namespace devhost

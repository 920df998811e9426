#include "tests/support/RecordingDevice.h"

#include <utility>

namespace testsupport {

std::string TrapText(const TrapTarget& trap) {
  return trap.target + "|" + trap.community + "|" + trap.port;
}

std::string TrapText(const std::vector<TrapTarget>& traps) {
  std::string text;
  for (const TrapTarget& trap : traps) {
    text += (text.empty() ? "" : " ") + TrapText(trap);
  }
  return text;
}

RecordingDevice::RecordingDevice(unsigned long deviceId, Journal& journal)
    : m_prefix(std::to_string(deviceId) + "."), m_journal(journal) {}

void RecordingDevice::Note(const char* call) {
  m_journal.Note(m_prefix + call);
}

void RecordingDevice::Note(const char* call, const std::string& argument) {
  m_journal.Note(m_prefix + call + " " + argument);
}

void RecordingDevice::Note(const char* call, bool argument) {
  Note(call, std::string(argument ? "true" : "false"));
}

bool RecordingDevice::GetIsManagedDevice() {
  Note("GetIsManagedDevice");
  return managed;
}

void RecordingDevice::SetIsManagedDevice(bool value) {
  Note("SetIsManagedDevice", value);
  managed = value;
}

bool RecordingDevice::GetIsConfigDirty() {
  Note("GetIsConfigDirty");
  return dirty;
}

void RecordingDevice::SetIsConfigDirty(bool value) {
  Note("SetIsConfigDirty", value);
  dirty = value;
}

bool RecordingDevice::GetEnabledSetting() {
  Note("GetEnabledSetting");
  return enabled;
}

void RecordingDevice::SetEnabledSetting(bool value) {
  Note("SetEnabledSetting", value);
  enabled = value;
}

std::string RecordingDevice::GetCommunityReadSetting() {
  Note("GetCommunityReadSetting");
  return communityRead;
}

void RecordingDevice::SetCommunityReadSetting(std::string value) {
  Note("SetCommunityReadSetting", value);
  communityRead = std::move(value);
}

bool RecordingDevice::GetWasCommunityReadSettingErased() {
  Note("GetWasCommunityReadSettingErased");
  return communityReadErased;
}

std::string RecordingDevice::GetCommunityWriteSetting() {
  Note("GetCommunityWriteSetting");
  return communityWrite;
}

void RecordingDevice::SetCommunityWriteSetting(std::string value) {
  Note("SetCommunityWriteSetting", value);
  communityWrite = std::move(value);
}

bool RecordingDevice::GetWasCommunityWriteSettingErased() {
  Note("GetWasCommunityWriteSettingErased");
  return communityWriteErased;
}

std::string RecordingDevice::GetSysContactSetting() {
  Note("GetSysContactSetting");
  return sysContact;
}

void RecordingDevice::SetSysContactSetting(std::string value) {
  Note("SetSysContactSetting", value);
  sysContact = std::move(value);
}

bool RecordingDevice::GetWasSysContactSettingErased() {
  Note("GetWasSysContactSettingErased");
  return sysContactErased;
}

bool RecordingDevice::GetUsePrimaryContactSetting() {
  Note("GetUsePrimaryContactSetting");
  return usePrimaryContact;
}

void RecordingDevice::SetUsePrimaryContactSetting(bool value) {
  Note("SetUsePrimaryContactSetting", value);
  usePrimaryContact = value;
}

std::string RecordingDevice::GetSysLocationSetting() {
  Note("GetSysLocationSetting");
  return sysLocation;
}

void RecordingDevice::SetSysLocationSetting(std::string value) {
  Note("SetSysLocationSetting", value);
  sysLocation = std::move(value);
}

bool RecordingDevice::GetWasSysLocationSettingErased() {
  Note("GetWasSysLocationSettingErased");
  return sysLocationErased;
}

bool RecordingDevice::GetUseProjectOwnerAddressSetting() {
  Note("GetUseProjectOwnerAddressSetting");
  return useProjectOwnerAddress;
}

void RecordingDevice::SetUseProjectOwnerAddressSetting(bool value) {
  Note("SetUseProjectOwnerAddressSetting", value);
  useProjectOwnerAddress = value;
}

std::string RecordingDevice::GetSysNameSetting() {
  Note("GetSysNameSetting");
  return sysName;
}

void RecordingDevice::SetSysNameSetting(std::string value) {
  Note("SetSysNameSetting", value);
  sysName = std::move(value);
}

bool RecordingDevice::GetWasSysNameSettingErased() {
  Note("GetWasSysNameSettingErased");
  return sysNameErased;
}

bool RecordingDevice::GetUseRoomDeviceSetting() {
  Note("GetUseRoomDeviceSetting");
  return useRoomDevice;
}

void RecordingDevice::SetUseRoomDeviceSetting(bool value) {
  Note("SetUseRoomDeviceSetting", value);
  useRoomDevice = value;
}

std::vector<TrapTarget> RecordingDevice::GetTrapTargetsSetting() {
  Note("GetTrapTargetsSetting");
  return trapTargets;
}

void RecordingDevice::SetTrapTargetsSetting(std::vector<TrapTarget> targets) {
  Note("SetTrapTargetsSetting", TrapText(targets));
  trapTargets = std::move(targets);
}

void RecordingDevice::ClearTrapTargetSetting() {
  Note("ClearTrapTargetSetting");
  trapTargets.clear();
}

void RecordingDevice::AddTrapTargetSetting(std::string target, std::string community, std::string port) {
  const TrapTarget trap(target, community, port);
  Note("AddTrapTargetSetting", TrapText(trap));
  trapTargets.push_back(trap);
}

bool RecordingDevice::GetWasTrapTargetsSettingErased() {
  Note("GetWasTrapTargetsSettingErased");
  return trapTargetsErased;
}

void RecordingDevice::AgentAvailable() {
  Note("AgentAvailable");
}

int RecordingDevice::CopyFrom(const std::string& path, std::string& config) {
  Note("CopyFrom", path);
  const int status = copyFrom.Next();
  if (status == 0) {
    config = file;
  }
  return status;
}

int RecordingDevice::CopyTo(const std::string& path, const std::string& config) {
  Note("CopyTo", path);
  offered = config;
  const int status = copyTo.Next();
  if (status == 0) {
    file = config;
  }
  return status;
}

int RecordingDevice::RebootController() {
  Note("RebootController");
  return reboot.Next();
}

int RecordingDevice::StopMasterAgent() {
  Note("StopMasterAgent");
  return stop.Next();
}

int RecordingDevice::StartMasterAgent() {
  Note("StartMasterAgent");
  return start.Next();
}

std::string RecordingDevice::GetSNMPVersion() {
  Note("GetSNMPVersion");
  return version;
}

bool RecordingDevice::IsSNMPVersionValid(const std::string& text) {
  Note("IsSNMPVersionValid", text);
  return versionValid;
}

}  // namespace testsupport

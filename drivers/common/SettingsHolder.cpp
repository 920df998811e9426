#include "drivers/common/SettingsHolder.h"

#include <utility>

namespace drivers {

void SettingsHolder::SetCommunityReadSetting(std::string community) {
  m_settings.communityRead.Set(std::move(community));
}

void SettingsHolder::SetCommunityWriteSetting(std::string community) {
  m_settings.communityWrite.Set(std::move(community));
}

void SettingsHolder::SetSysContactSetting(std::string contact) {
  m_settings.sysContact.Set(std::move(contact));
}

void SettingsHolder::SetSysLocationSetting(std::string location) {
  m_settings.sysLocation.Set(std::move(location));
}

void SettingsHolder::SetSysNameSetting(std::string name) {
  m_settings.sysName.Set(std::move(name));
}

void SettingsHolder::SetTrapTargetsSetting(std::vector<TrapTarget> targets) {
  m_settings.trapTargets.Set(std::move(targets));
}

void SettingsHolder::AddTrapTargetSetting(std::string target, std::string community, std::string port) {
  m_settings.trapTargets.Add(TrapTarget(target, community, port));
}

}  // namespace drivers

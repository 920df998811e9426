#include "drivers/common/SettingsHolder.h"

#include <utility>

namespace drivers {

void SettingsHolder::Note(bool changed) {
  if (changed) {
    SettingsChanged();
  }
}

void SettingsHolder::SetCommunityReadSetting(std::string community) {
  Note(m_settings.communityRead.Set(std::move(community)));
}

void SettingsHolder::SetCommunityWriteSetting(std::string community) {
  Note(m_settings.communityWrite.Set(std::move(community)));
}

void SettingsHolder::SetSysContactSetting(std::string contact) {
  Note(m_settings.sysContact.Set(std::move(contact)));
}

void SettingsHolder::SetSysLocationSetting(std::string location) {
  Note(m_settings.sysLocation.Set(std::move(location)));
}

void SettingsHolder::SetSysNameSetting(std::string name) {
  Note(m_settings.sysName.Set(std::move(name)));
}

void SettingsHolder::SetTrapTargetsSetting(std::vector<TrapTarget> targets) {
  Note(m_settings.trapTargets.Set(std::move(targets)));
}

void SettingsHolder::AddTrapTargetSetting(std::string target, std::string community, std::string port) {
  m_settings.trapTargets.Add(TrapTarget(target, community, port));
  SettingsChanged();
}

}  // namespace drivers

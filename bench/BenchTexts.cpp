#include "bench/BenchTexts.h"

std::string ForeignText(std::size_t size) {
  static const char kBlock[] =
      "# Who may ask, and from where.\n"
      "view   systemonly  included   .1.3.6.1.2.1.1\n"
      "rouser authPrivUser authpriv -V systemonly\n"
      "\n"
      "# What else this machine tells.\n"
      "extend uptime /usr/bin/uptime\n"
      "disk / 10%\n"
      "load 12 10 5\n"
      "proc cron\n";
  std::string text;
  text.reserve(size + sizeof(kBlock));
  while (text.size() < size) {
    text += kBlock;
  }
  return text;
}

std::string SettingsXml(unsigned long deviceId) {
  return "<managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice><snmpEnabledSetting>true</snmpEnabledSetting>"
         "<snmpCommunityReadSetting>our house</snmpCommunityReadSetting>"
         "<snmpCommunityWriteSetting>k3tchen</snmpCommunityWriteSetting>"
         "<snmpSysContactSetting>Ada, ground floor</snmpSysContactSetting>"
         "<snmpSysLocationSetting>Kitchen, left of the door</snmpSysLocationSetting>"
         "<snmpSysNameSetting>kitchen controller</snmpSysNameSetting><snmpTrapTargets>"
         "<trapTarget><target>192.0.2.5</target><community>house traps</community><port>162</port></trapTarget>"
         "<trapTarget><target>nms.example</target><community>public</community><port/></trapTarget></snmpTrapTargets>"
         "<deviceId>" +
         std::to_string(deviceId) + "</deviceId></managedDevice>";
}

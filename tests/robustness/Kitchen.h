#ifndef TESTS_ROBUSTNESS_KITCHEN_H
#define TESTS_ROBUSTNESS_KITCHEN_H

#include <sys/stat.h>

#include <string>

#include "tests/support/ScratchFolder.h"

namespace testsupport {

// A folder with a project that has the agent and one device.
class Kitchen : public ScratchFolder {
 public:
  Kitchen() {
    WriteProject("");
    WriteConf("#\n");
    Write("settings.xml", Settings("<snmpCommunityReadSetting>placeholder</snmpCommunityReadSetting>"));
  }

  void WriteProject(const std::string& more) const { Write("project.xml", std::string(kProjectHead) + more + kProjectTail); }
  void WriteConf(const std::string& text) const { ::chmod(Write("kitchen/snmpd.conf", text).c_str(), 0600); }
  std::string Conf() const { return Path("kitchen/snmpd.conf"); }

  static std::string Settings(const std::string& settings) { return kSettingsHead + settings + kSettingsTail; }

  static constexpr char kProjectHead[] =
      "<project>\n"
      "  <driver id=\"1\" name=\"agent\" module=\"snmp_configuration_agent.so\"/>\n"
      "  <driver id=\"12\" name=\"kitchen\" module=\"simulated_device.so\"><config folder=\"{project}/kitchen\" "
      "version=\"1.2.0\" versionValid=\"true\"/></driver>\n";
  static constexpr char kProjectTail[] = "</project>\n";
  static constexpr char kSettingsHead[] = "<managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice>";
  static constexpr char kSettingsTail[] = "<deviceId>12</deviceId></managedDevice>";
  // Text above a section is dropped, so a preview shows it, masked.
  static constexpr char kSection[] = "\n# Halvoren Section Start\n# Halvoren Section End\n";
};

}  // namespace testsupport

#endif

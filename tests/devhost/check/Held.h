#ifndef TESTS_DEVHOST_CHECK_HELD_H
#define TESTS_DEVHOST_CHECK_HELD_H

#include <string>

#include "config/SectionReader.h"
#include "device/SNMPDevice.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingDevice.h"

namespace devhost {

// What the agent's record and its device hold after the agent has read the lines of a section.
struct Held {
  explicit Held(const std::string& lines) : device(7, journal), record(7, &device) {
    managed_section::Fill("# Halvoren Section Start\n" + lines + "\n# Halvoren Section End\n", record);
  }
  std::string Value(const std::string& keyword) {
    return keyword == "rocommunity"     ? device.GetCommunityReadSetting()
           : keyword == "rwcommunity"   ? device.GetCommunityWriteSetting()
           : keyword == "agentXTimeout" ? record.GetAgentXTimeout()
           : keyword == "sysContact"    ? device.GetSysContactSetting()
           : keyword == "sysLocation"   ? device.GetSysLocationSetting()
           : keyword == "sysName"       ? device.GetSysNameSetting()
                                        : "";
  }
  Journal journal;
  testsupport::RecordingDevice device;
  SNMPDevice record;
};

}  // namespace devhost

#endif

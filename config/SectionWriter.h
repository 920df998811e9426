#ifndef CONFIG_SECTION_WRITER_H
#define CONFIG_SECTION_WRITER_H

#include <ctime>
#include <string>
#include <vector>

#include "config/ManagedSection.h"
#include "device/TrapTarget.h"

namespace managed_section {

// The values from which one section is made, as the device holds them.
struct Settings {
  std::string communityRead;
  std::string communityWrite;
  std::string agentXTimeout;
  std::string agentXRetries;
  std::string sysContact;
  std::string sysLocation;
  std::string sysName;
  std::vector<TrapTarget> trapTargets;
};

// Returns `now` in local time, as it stands in the section's header: "Saturday, November, 21 2026 at 14:05:09". Day and
// month are in the language of the process's locale. The comma after the month belongs to the format.
std::string TimeStamp(std::time_t now);

// Returns the complete section, from the first line of the header to the trailer's last line feed. Values are written as
// they are, without checks or escapes.
std::string Write(const Texts& texts, const Settings& settings, const std::string& timeStamp);

}  // namespace managed_section

#endif

#ifndef FUZZ_AGENT_REFERENCE_SECTION_H
#define FUZZ_AGENT_REFERENCE_SECTION_H

#include <ctime>
#include <string>
#include <vector>

#include "device/TrapTarget.h"

namespace fuzz {

struct SectionValues {
  std::time_t time = 0;
  std::string communityRead;
  std::string communityWrite;
  std::string agentXTimeout;
  std::string agentXRetries;
  std::string sysContact;
  std::string sysLocation;
  std::string sysName;
  std::vector<TrapTarget> trapTargets;
};

// Returns the managed section, made from one template.
std::string Section(const SectionValues& values);

}  // namespace fuzz

#endif

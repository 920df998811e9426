#ifndef DEVHOST_OPERATIONS_ADOPT_H
#define DEVHOST_OPERATIONS_ADOPT_H

#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/check/Finding.h"
#include "devhost/driver/DriverEntry.h"
#include "devhost/system/FileText.h"

namespace devhost {

// A file that cannot be adopted: why, in one line.
class AdoptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What makes a managed file of one that was written by hand. The sentences name lines and directives, and quote no values.
struct Adoption {
  std::string settings;  // the device settings element, for device 1; with secrets
  std::string text;      // the file without the lines that go; with secrets
  std::string patch;     // takes them out, as a unified diff for the program patch; "" when none goes; with secrets
  std::vector<std::string> becoming;  // lines that become settings
  std::vector<std::string> going;     // lines that go for another reason: they have no effect, or the section says the same
  std::vector<std::string> staying;   // lines that stay below the section, with a reason where one is expected
  std::vector<std::string> coming;    // lines that the agent writes besides
  std::vector<Finding> winning;       // lines that stay and win over the section, or lose to it
};

// Works out how a file becomes a managed one, so that the daemon serves the same contact, location, name, communities and
// trap targets as before. A line becomes a setting only where it means the same at the top of the file, where the section
// is, and where the agent reads it back as it is. Nothing is changed. `path` is where the file is, for the files that it
// includes. The agent writes the new section on a scratch device, to see what would win over it.
//
// Throws AdoptError for a file that has a section or is in UTF-16, HostError when the agent cannot be loaded, ProgramError.
Adoption Adopt(const NamedText& file, const std::string& path, const DriverEntry& agent);

}  // namespace devhost

#endif

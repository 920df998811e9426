#ifndef DRIVERS_LOCALSNMPD_SERVED_CONFIG_H
#define DRIVERS_LOCALSNMPD_SERVED_CONFIG_H

#include <cstddef>
#include <string>
#include <vector>

namespace drivers {

// Where the daemon looks for files that a configuration includes. All absolute.
struct IncludePaths {
  std::string device;   // the folder of snmpd.conf: of includeFile
  std::string working;  // the daemon's working folder: of includeDir
  std::string search;   // of includeSearch
};

// What the daemon reads in place of snmpd.conf: the same lines under the same numbers, but without those that would make it
// serve other ports than its own, or outlive the host. These are made comments:
//  - agentaddress, agentuser and agentgroup, however they are written;
//  - an include of files that hold such a line, or that cannot be judged because they are too many or too large.
// A zero byte, at which the daemon would go on with the next line, is replaced by a question mark.
struct ServedConfig {
  // What the daemon does not get.
  struct Note {
    std::size_t number;  // of the line, from 1
    std::string line;    // as it stands there
    std::string what;    // in words
  };
  std::string text;
  std::vector<Note> notes;
};

ServedConfig MakeServedConfig(const std::string& text, const IncludePaths& paths);

}  // namespace drivers

#endif

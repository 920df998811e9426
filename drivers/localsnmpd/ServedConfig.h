#ifndef DRIVERS_LOCALSNMPD_SERVED_CONFIG_H
#define DRIVERS_LOCALSNMPD_SERVED_CONFIG_H

#include <cstddef>
#include <string>
#include <vector>

namespace drivers {

// Where the daemon looks for files that a configuration includes. All paths are absolute.
struct IncludePaths {
  std::string device;   // the folder of snmpd.conf: of includeFile
  std::string working;  // the daemon's working folder: of includeDir
  std::string search;   // of includeSearch
};

// What the daemon reads in place of snmpd.conf: the same lines with the same numbers. Lines that would make it serve other
// ports than its own, or outlive the host, become comments:
//  - agentaddress, agentuser and agentgroup, however they are written;
//  - an include of files that hold such a line, or that cannot be judged because they are too many or too large.
// A zero byte, after which the daemon would read on in the next line as if it were the same, is replaced by a question mark.
struct ServedConfig {
  // A line that the daemon does not get as it is.
  struct Note {
    std::size_t number;  // of the line, from 1
    std::string line;    // as it stands there
    std::string what;    // in words
  };
  std::string text;
  std::vector<Note> notes;
};

// Makes it from the text of snmpd.conf. Reads the included files.
ServedConfig MakeServedConfig(const std::string& text, const IncludePaths& paths);

}  // namespace drivers

#endif

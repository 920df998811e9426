#ifndef DEVHOST_SNMPD_DAEMON_OUTPUT_H
#define DEVHOST_SNMPD_DAEMON_OUTPUT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// What the daemon says about one line of a configuration file: "FILE: line N: Error: TEXT".
struct Complaint {
  std::string file;  // as the daemon names it
  std::size_t line = 0;
  std::string kind;  // "Error" or "Warning"
  std::string text;
};

// What the daemon wrote to its log or its standard error.
struct DaemonOutput {
  // Each once, in the daemon's order. The warning that a sink has its port in a field of its own is left out: the managed
  // section is written like that.
  std::vector<Complaint> complaints;
  std::vector<std::string> otherLines;  // what is neither a complaint nor empty
};

// Cuts the output into complaints and other lines.
DaemonOutput ReadDaemonOutput(std::string_view output);

}  // namespace devhost

#endif

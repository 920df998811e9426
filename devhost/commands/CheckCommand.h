#ifndef DEVHOST_COMMANDS_CHECK_COMMAND_H
#define DEVHOST_COMMANDS_CHECK_COMMAND_H

#include <string>
#include <vector>

namespace devhost {

class Output;

// `devhost check`.
struct CheckOptions {
  std::vector<std::string> files;  // "-" for standard input
  bool json = false;
  bool daemon = false;  // have the daemon's own parser read the files, too
  bool showSecrets = false;
};

// Says what in the files will surprise their owners. Exit status: 0 nothing, 1 findings, 2 when a file cannot be read or the
// daemon cannot be asked; every file is looked at whatever became of the one before.
int RunCheck(const CheckOptions& options, Output& out, Output& errors);

// `devhost advise`.
struct AdviseOptions {
  std::string settings;  // file of one device settings element, "-" for standard input
  bool json = false;
  bool showSecrets = false;
};

// Says what in the settings will surprise their owner once they are written. Exit status as above.
int RunAdvise(const AdviseOptions& options, Output& out, Output& errors);

}  // namespace devhost

#endif

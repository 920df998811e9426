#ifndef DEVHOST_OPERATIONS_RESTART_COMMAND_H
#define DEVHOST_OPERATIONS_RESTART_COMMAND_H

#include <chrono>
#include <string>
#include <vector>

namespace devhost {

// Why the program of such a command cannot be run, in one line, or "". Runs nothing.
std::string WhyNotRunnable(const std::vector<std::string>& words);

// Runs the command that makes a daemon read its file again, and waits for its end. `words` are the program, found as
// FindProgram does, and its arguments; there is no shell. What the program starts and leaves behind, a daemon for example,
// lives on: so this is not RunProgram. Returns why it has failed, in one line, with the last line that it has printed, or
// "".
std::string RunRestartCommand(const std::vector<std::string>& words,
                              std::chrono::milliseconds deadline = std::chrono::seconds(60));

}  // namespace devhost

#endif

#ifndef DEVHOST_COMMANDS_COMMAND_LINE_H
#define DEVHOST_COMMANDS_COMMAND_LINE_H

#include <string>
#include <vector>

#include "devhost/commands/Command.h"

namespace devhost {

// What a command line asks for.
struct CommandLine {
  const Command* command = nullptr;  // one of those that were given to the parser; null when `text` is the answer
  Arguments arguments;               // of the command
  ExitStatus status = ExitStatus::Wrong;
  std::string text;  // help or the version when `status` is Good, else what is wrong and what is allowed
};

// Reads the arguments of the program; the first is its name. `commands` must outlive the result.
CommandLine ParseCommandLine(int argc, const char* const* argv, const std::vector<Command>& commands);

}  // namespace devhost

#endif

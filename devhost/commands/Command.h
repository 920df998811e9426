#ifndef DEVHOST_COMMANDS_COMMAND_H
#define DEVHOST_COMMANDS_COMMAND_H

#include <string>
#include <vector>

#include "devhost/commands/ExitStatus.h"

namespace devhost {

class Arguments;
class Console;

// One option or argument of a command. The command line, its help and the messages for wrong usage are made of these.
struct CommandOption {
  enum class Takes { Nothing, Text, Choice, Path, Paths };

  bool IsArgument() const { return name[0] != '-'; }

  const char* name;     // "--project"; the name of an argument has no dashes
  const char* value;    // what the help calls the value: "FILE"; "" for an argument, and for an option that takes nothing
  const char* meaning;  // in one line
  Takes takes = Takes::Nothing;
  bool isRequired = false;
  std::vector<std::string> choices = {};  // the values that Takes::Choice allows
};

// One command of the program: what is said about it, and what it does.
struct Command {
  // Does what was asked for. What cannot be done at all is thrown; Commands.cpp knows the exit status for each error.
  using Run = ExitStatus (*)(const Arguments& arguments, Console& console);

  const char* name;
  const char* meaning;                 // in one line
  std::vector<CommandOption> options;  // and arguments, which stand in this order on the command line
  std::string footer;                  // ends the help: exit statuses and an example
  Run run;
};

}  // namespace devhost

#endif

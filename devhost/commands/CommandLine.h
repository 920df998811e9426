#ifndef DEVHOST_COMMANDS_COMMAND_LINE_H
#define DEVHOST_COMMANDS_COMMAND_LINE_H

#include <string>

#include "devhost/commands/CheckCommand.h"
#include "devhost/commands/PreviewCommand.h"

namespace devhost {

// `devhost run`.
struct RunOptions {
  std::string project;  // "" for the agent alone
  std::string moduleFolder;
  std::string script;  // "" for none, "-" for standard input
  std::string state;   // folder for the drivers' states, "" for none
  std::string color = "auto";
  bool pretty = false;
  bool showSecrets = false;
};

// What a command line asks for.
struct CommandLine {
  enum class Kind {
    Run,
    Check,
    Advise,
    Preview,
    Answer,  // print `text`: help or the version
    Wrong    // wrong usage: `text` says what and what is allowed
  };
  Kind kind = Kind::Wrong;
  RunOptions run;
  CheckOptions check;
  AdviseOptions advise;
  PreviewOptions preview;
  std::string text;
};

// Reads the arguments of the program; the first is its name. `moduleFolder` is the default of --module-dir.
CommandLine ParseCommandLine(int argc, const char* const* argv, const std::string& moduleFolder);

}  // namespace devhost

#endif

#include <string>

#include "devhost/commands/Commands.h"
#include "devhost/commands/EmbeddedFiles.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kShell{"shell", "", "The shell: bash, zsh or fish", Takes::Choice, true, {"bash", "zsh", "fish"}};

constexpr char kFooter[] =
    "Prints the script with which the shell completes command lines of devhost: commands,\n"
    "options, their values, files, the devices of a project, and the ids of checks. An\n"
    "installed devhost needs no such script, because the installation has it already.\n"
    "\n"
    "Exit status: 0 printed; 1 the output could not be written; 2 wrong usage.\n"
    "\n"
    "Example: complete in this bash.\n"
    "\n"
    "  eval \"$(devhost completion bash)\"";

ExitStatus PrintScript(const Arguments& arguments, Console& console) {
  const std::string name = "devhost." + arguments.Text(kShell);
  for (const EmbeddedFile& script : ShellFiles()) {
    if (script.name == name) {
      console.Out().Write(script.text);
    }
  }
  return ExitStatus::Good;
}

}  // namespace

Command MakeCompletion() {
  return {"completion", "Print the script that completes command lines in a shell", {kShell}, kFooter, &PrintScript};
}

}  // namespace devhost

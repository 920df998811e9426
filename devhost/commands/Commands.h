#ifndef DEVHOST_COMMANDS_COMMANDS_H
#define DEVHOST_COMMANDS_COMMANDS_H

#include <vector>

#include "devhost/commands/Command.h"
#include "devhost/commands/Console.h"

namespace devhost {

// Each is in the file of its name, with its options and its help.
Command MakeRun();
Command MakeShell();
Command MakeReplay();
Command MakeServe();
Command MakeCheck();
Command MakeAdopt();
Command MakeAdvise();
Command MakeValidate();
Command MakePreview();
Command MakeApply();
Command MakeHistory();
Command MakeUndo();
Command MakeDrift();
Command MakeProbe();
Command MakeRotate();
Command MakeModule();
Command MakeNewDriver();
Command MakeConform();
Command MakeFleet();
Command MakeTrust();
Command MakeCompletion();

// Every command of the program, in the order of the help.
const std::vector<Command>& Commands();

// The whole program: reads the arguments, of which the first is the program's name, and does what they ask for. Never
// throws; prints what goes wrong.
ExitStatus RunCommandLine(int argc, const char* const* argv, Console& console);

}  // namespace devhost

#endif

#include "devhost/commands/Commands.h"

#include <exception>
#include <new>

#include "devhost/commands/CommandLine.h"
#include "devhost/commands/Completion.h"
#include "devhost/commands/HostProcess.h"
#include "devhost/driver/DriverModule.h"
#include "devhost/preview/Preview.h"
#include "devhost/project/Project.h"
#include "devhost/replay/Conversation.h"
#include "devhost/script/ScriptReader.h"
#include "devhost/state/StateStore.h"
#include "devhost/system/FileText.h"

namespace devhost {

namespace {

template <typename... Errors>
bool IsOneOf(const std::exception& error) {
  return (... || (dynamic_cast<const Errors*>(&error) != nullptr));
}

// Errors of what a command is given, as opposed to what happens while it works.
bool IsWrongInput(const std::exception& error) {
  return IsOneOf<ConversationError, FileError, ModuleError, PreviewError, ProjectError, ScriptError, StateError>(error);
}

}  // namespace

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      MakeRun(),     MakeShell(),  MakeReplay(),    MakeServe(),   MakeCheck(), MakeAdvise(), MakeValidate(),
      MakePreview(), MakeAdopt(),  MakeApply(),     MakeHistory(), MakeUndo(),  MakeDrift(),  MakeProbe(),
      MakeRotate(),  MakeModule(), MakeNewDriver(), MakeConform(), MakeFleet(), MakeTrust(),  MakeCompletion()};
  return commands;
}

ExitStatus RunCommandLine(int argc, const char* const* argv, Console& console) {
  try {
    // Not a command for people: the scripts in shells/ ask what could stand on the line.
    if (argc > 1 && argv[1] == std::string("__complete")) {
      console.Out().Write(CompletionLines({argv + 2, argv + argc}, Commands()));
      return console.Finish(ExitStatus::Good);
    }
    const std::vector<Command> hostProcess = {MakeHostProcess()};
    const bool isHostProcess = argc > 1 && argv[1] == std::string(kHostProcess);
    const CommandLine line = ParseCommandLine(argc, argv, isHostProcess ? hostProcess : Commands());
    if (line.command != nullptr) {
      return console.Finish(line.command->run(line.arguments, console));
    }
    (line.status == ExitStatus::Good ? console.Out() : console.Errors()).Write(line.text);
    return console.Finish(line.status);
  } catch (const std::bad_alloc&) {
    console.Complain("out of memory");
  } catch (const std::exception& error) {
    console.Complain(error.what());
    return IsWrongInput(error) ? ExitStatus::Wrong : ExitStatus::Failed;
  }
  return ExitStatus::Failed;
}

}  // namespace devhost

#include <unistd.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/LineEditor.h"
#include "devhost/commands/Playing.h"
#include "devhost/engine/HostError.h"
#include "devhost/project/DriverNames.h"
#include "devhost/script/ScriptActions.h"
#include "devhost/script/ScriptRunner.h"
#include "devhost/system/FileText.h"
#include "devhost/system/LineInput.h"

namespace devhost {

namespace {

constexpr char kPrompt[] = "devhost> ";
constexpr char kInput[] = "standard input";
const Where kStart{"at the start"};

constexpr char kFooter[] =
    "A session with the drivers of a project: each line of standard input is an action as in\n"
    "\"devhost run --help\", played as soon as it is there. A line that is wrong or fails is\n"
    "reported, and the session goes on. The end of the input ends it: the drivers are\n"
    "unloaded, and their states are kept.\n"
    "\n"
    "On a terminal, the arrow keys bring back earlier lines, the tabulator key completes\n"
    "words, drivers, commands and ids, Ctrl-C clears the line and Ctrl-D ends the session.\n"
    "\n"
    "With --json a program can drive it: after the start, and after each line, all that comes\n"
    "of it is followed by an object of kind \"done\", whose member \"good\" says whether it went\n"
    "well. A start that fails has one, too. docs/write-a-configuration-tool.md has examples.\n"
    "\n"
    "Exit status: 0 the session came to its end, whatever became of its lines; 1 a driver\n"
    "could not start, broke the host's rules or could not be restarted, or a state, the input\n"
    "or the output could not be read or written; 2 wrong usage, or a project, module or state\n"
    "folder that is wrong.\n"
    "\n"
    "Example: ask for the devices.\n"
    "\n"
    "  echo 'command GetDeviceList' | devhost shell --project project.xml --json";

// Where the lines come from. Somebody at a terminal gets an editor, unless a program is to read the output.
LineSource Lines(const Arguments& arguments, const ScriptRunner& runner) {
  const bool isTerminal = ::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1;
  LineSource edited;
  if (isTerminal && !arguments.Has(kJsonLines)) {
    edited = EditedLines(kPrompt, [&runner](const std::string& line) { return NextWords(line, runner.Names()); });
  }
  if (edited) {
    return edited;
  }
  const auto input = std::make_shared<LineInput>(STDIN_FILENO, kInput);
  return [input] { return input->Next(); };
}

// Says what became of the start, or of a line that nobody can play: for a program, which waits for the end of the answer.
void Answer(Reporter& reporter, const Where& where, const std::string& problem) {
  ScriptOccurrence done{ScriptOccurrence::Kind::Done};
  done.good = problem.empty();
  if (!done.good) {
    reporter.Report(ScriptOccurrence{ScriptOccurrence::Kind::Error, 0, "", problem}, where);
  }
  reporter.Report(done, where);
}

// Plays line by line to the end of the input.
void Play(const LineSource& lines, ScriptRunner& runner, Reporter& reporter) {
  for (std::size_t number = 1; !runner.HasGivenUp() && !reporter.Failed(); ++number) {
    try {
      std::optional<std::string> line = lines();
      if (!line) {
        return;
      }
      runner.PlayLine({kInput, ".", std::move(*line)}, number);
    } catch (const LineTooLong& error) {
      Answer(reporter, {kInput + (":" + std::to_string(number)), number}, error.Reason());
    }
  }
}

ExitStatus Session(const Arguments& arguments, Console& console, ScriptRunner& runner, Reporter& reporter) {
  ScriptOccurrence started{ScriptOccurrence::Kind::Done};
  started.good = runner.GetResult().Good();
  reporter.Report(started, kStart);
  ExitStatus status = ExitStatus::Good;
  try {
    Play(Lines(arguments, runner), runner, reporter);
  } catch (const FileError& error) {
    console.Complain(error.what());
    status = ExitStatus::Failed;
  }
  runner.Stop();
  const ScriptRunner::Result& result = runner.GetResult();
  const bool isWhole = result.badManners + result.driversFailed + result.stateProblems == 0 && !runner.HasGivenUp();
  return isWhole ? status : ExitStatus::Failed;
}

ExitStatus Shell(const Arguments& arguments, Console& console) {
  Masker secrets(arguments.Has(kShowSecrets));
  const std::unique_ptr<Reporter> reporter = MakeReporter(arguments, console.Out());
  // People read on standard error why there is no session.
  const auto answer = [&](const std::exception& error) {
    if (arguments.Has(kJsonLines)) {
      Answer(*reporter, kStart, secrets.Text(error.what()));
    }
  };
  try {
    const Project project = PlayedProject(arguments);
    const DriverNames names(project.drivers);
    const std::unique_ptr<StateStore> states = OpenStates(arguments);
    ScriptRunner runner(project, names, *states, *reporter, secrets);
    runner.Start();
    return Session(arguments, console, runner, *reporter);
  } catch (const HostError& error) {
    answer(error);
    console.Complain(secrets.Text(error.what()));
    return ExitStatus::Wrong;
  } catch (const std::exception& error) {
    answer(error);
    throw;
  }
}

}  // namespace

Command MakeShell() {
  return {"shell",
          "Play actions to the drivers of a project as they are typed",
          {kPlayedProject, kModuleFolder, kPlayedStates, kJsonLines, kPretty, kColor, kShowSecrets},
          kFooter,
          &Shell};
}

}  // namespace devhost

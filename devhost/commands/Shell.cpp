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

constexpr char kFooter[] =
    "A session with the drivers of a project: each line of standard input is an action as in\n"
    "\"devhost run --help\", played as soon as it is there. A line that is wrong or fails is\n"
    "reported, and the session goes on. The end of the input ends it: the drivers are\n"
    "unloaded, and their states are kept.\n"
    "\n"
    "On a terminal, the arrow keys bring back earlier lines, the tabulator key completes\n"
    "words, Ctrl-C clears the line and Ctrl-D ends the session.\n"
    "\n"
    "With --json a program can drive it: after the start, and after each line, all that comes\n"
    "of it is followed by an object of kind \"done\", whose member \"good\" says whether it went\n"
    "well. docs/write-a-configuration-tool.md has an example.\n"
    "\n"
    "Exit status: 0 the session came to its end, whatever became of its lines; 1 a driver\n"
    "could not start, broke the host's rules or could not be restarted, or a state, the input\n"
    "or the output could not be read or written; 2 wrong usage, or a project, module or state\n"
    "folder that is wrong.\n"
    "\n"
    "Example: ask for the devices.\n"
    "\n"
    "  echo 'command GetDeviceList' | devhost shell --project project.xml --json";

std::vector<std::string> NamesOf(const Project& project) {
  std::vector<std::string> names;
  names.reserve(project.drivers.size());
  for (const DriverEntry& driver : project.drivers) {
    names.push_back(driver.name);
  }
  return names;
}

// Where the lines come from. Somebody at a terminal gets an editor, unless a program is to read the output.
LineSource Lines(const Arguments& arguments, const Project& project) {
  const bool isTerminal = ::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1;
  LineSource edited;
  if (isTerminal && !arguments.Has(kJsonLines)) {
    edited = EditedLines(kPrompt, [names = NamesOf(project)](const std::string& line) { return NextWords(line, names); });
  }
  if (edited) {
    return edited;
  }
  const auto input = std::make_shared<LineInput>(STDIN_FILENO, kInput);
  return [input] { return input->Next(); };
}

// Plays line by line to the end of the input.
void Play(const LineSource& lines, ScriptRunner& runner, const Reporter& reporter) {
  for (std::size_t number = 1; !runner.HasGivenUp() && !reporter.Failed(); ++number) {
    std::optional<std::string> line = lines();
    if (!line) {
      return;
    }
    runner.PlayLine({kInput, ".", std::move(*line)}, number);
  }
}

ExitStatus Shell(const Arguments& arguments, Console& console) {
  Masker secrets(arguments.Has(kShowSecrets));
  const std::unique_ptr<Reporter> reporter = MakeReporter(arguments, console.Out());
  const Project project = PlayedProject(arguments);
  const DriverNames names(project.drivers);
  const std::unique_ptr<StateStore> states = OpenStates(arguments);
  ScriptRunner runner(project, names, *states, *reporter, secrets);
  try {
    runner.Start();
  } catch (const HostError& error) {
    console.Complain(secrets.Text(error.what()));
    return ExitStatus::Wrong;
  }
  ScriptOccurrence started{ScriptOccurrence::Kind::Done};
  started.good = runner.GetResult().Good();
  reporter->Report(started, {"at the start"});
  ExitStatus status = ExitStatus::Good;
  try {
    Play(Lines(arguments, project), runner, *reporter);
  } catch (const FileError& error) {
    console.Complain(error.what());
    status = ExitStatus::Failed;
  }
  runner.Stop();
  const ScriptRunner::Result& result = runner.GetResult();
  const bool isWhole = result.badManners + result.driversFailed + result.stateProblems == 0 && !runner.HasGivenUp();
  return isWhole ? status : ExitStatus::Failed;
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

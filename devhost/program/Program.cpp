#include "devhost/program/Program.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "devhost/commands/CommandLine.h"
#include "devhost/commands/ExitStatus.h"
#include "devhost/engine/Host.h"
#include "devhost/project/Project.h"
#include "devhost/report/Printer.h"
#include "devhost/script/ScriptReader.h"
#include "devhost/script/ScriptRunner.h"
#include "devhost/state/StateFolder.h"
#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// File names and what a driver throws may hold line feeds.
void Complain(const std::string& text) {
  Output(STDERR_FILENO).Write("devhost: " + OneLine(text) + "\n");
}

// ../lib beside the program, wherever it was installed or built.
std::string DefaultModuleFolder() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? "." : (program.parent_path().parent_path() / "lib").string();
}

bool WantsColor(const std::string& when) {
  if (when != "auto") {
    return when == "always";
  }
  const char* const terminal = std::getenv("TERM");
  return ::isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr && terminal != nullptr &&
         std::string(terminal) != "dumb";
}

std::string Counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// One line for people who look at the end of the output only.
std::string Summary(const ScriptRunner::Result& result) {
  std::string text;
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (result.actionsFailed != 0) {
    add(Counted(result.actionsFailed, "action") + " failed");
  }
  if (result.expectationsFailed != 0) {
    add(Counted(result.expectationsFailed, "expectation") + " not met");
  }
  if (result.badManners != 0) {
    add("the host's rules broken " + Counted(result.badManners, "time"));
  }
  if (result.driversFailed != 0) {
    add("the start of " + Counted(result.driversFailed, "driver") + " failed");
  }
  if (result.stateProblems != 0) {
    add(Counted(result.stateProblems, "problem") + " with a driver's state");
  }
  return text + "; first: " + result.first;
}

// Exit status for what was written. Nobody is told that the reader of a pipe has gone away: the reader knows.
int Finish(const Output& output, int status) {
  if (output.Error() == 0) {
    return status;
  }
  if (output.Error() != EPIPE) {
    Complain("cannot write the output: " + std::generic_category().message(output.Error()));
  }
  return ExitStatus_Failed;
}

// Without a folder, states live as long as the program does.
std::unique_ptr<StateStore> OpenStates(const std::string& folder) {
  if (folder.empty()) {
    return std::make_unique<StateMemory>();
  }
  return std::make_unique<StateFolder>(folder);
}

int Run(const RunOptions& options) {
  Output output(STDOUT_FILENO);
  Printer printer(output, PrintStyle{options.pretty, WantsColor(options.color), options.showSecrets});
  const Project project =
      options.project.empty() ? AgentAlone(options.moduleFolder) : ReadProject(options.project, options.moduleFolder);
  const DriverNames names(project.drivers);
  const Script script = options.script.empty() ? Script() : LoadScript(options.script);
  CheckScript(script, names);
  const std::unique_ptr<StateStore> states = OpenStates(options.state);
  ScriptRunner runner(project, names, *states, printer);
  try {
    runner.Start();
  } catch (const HostError& error) {
    Complain(error.what());
    return Finish(output, ExitStatus_Wrong);
  }
  runner.Play(script);
  runner.Stop();
  if (!runner.GetResult().Good()) {
    Complain(Summary(runner.GetResult()));
    return Finish(output, ExitStatus_Failed);
  }
  return Finish(output, ExitStatus_Good);
}

int Dispatch(const CommandLine& line) {
  Output output(STDOUT_FILENO);
  Output errors(STDERR_FILENO);
  switch (line.kind) {
    case CommandLine::Kind::Run:
      return Run(line.run);
    case CommandLine::Kind::Check:
      return Finish(output, RunCheck(line.check, output, errors));
    case CommandLine::Kind::Advise:
      return Finish(output, RunAdvise(line.advise, output, errors));
    case CommandLine::Kind::Preview:
      return Finish(output, RunPreview(line.preview, output, errors));
    case CommandLine::Kind::Answer:
      output.Write(line.text);
      return Finish(output, ExitStatus_Good);
    case CommandLine::Kind::Wrong:
      errors.Write(line.text);
      break;
  }
  return ExitStatus_Wrong;
}

}  // namespace

int RunProgram(int argc, const char* const* argv) {
  try {
    return Dispatch(ParseCommandLine(argc, argv, DefaultModuleFolder()));
  } catch (const ProjectError& error) {
    Complain(error.what());
    return ExitStatus_Wrong;
  } catch (const FileError& error) {
    Complain(error.what());
    return ExitStatus_Wrong;
  } catch (const ScriptError& error) {
    Complain(error.what());
    return ExitStatus_Wrong;
  } catch (const StateError& error) {
    Complain(error.what());
    return ExitStatus_Wrong;
  } catch (const std::bad_alloc&) {
    Complain("out of memory");
  } catch (const std::exception& error) {
    Complain(error.what());
  }
  return ExitStatus_Failed;
}

}  // namespace devhost

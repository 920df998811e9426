#include "devhost/commands/HostProcess.h"

#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/Console.h"
#include "devhost/engine/HostError.h"
#include "devhost/session/Session.h"
#include "devhost/state/StateFolder.h"
#include "devhost/system/FileDescriptor.h"
#include "devhost/system/FileText.h"
#include "devhost/system/LineInput.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kProject{"--project", "FILE", "Project file", Takes::Path, true};
const CommandOption kStates{"--state", "DIR", "Folder with the drivers' states", Takes::Folder};
const CommandOption kReadOnly{"--read-only", "", "Refuse what changes something"};

// Takes a standard descriptor away from the drivers, and gives them another one: nothing that they or their programs read or
// print may get between the lines.
FileDescriptor TakeAway(int standard, int other) {
  FileDescriptor own(::fcntl(standard, F_DUPFD_CLOEXEC, 3));
  ::dup2(other, standard);
  return own;
}

// Plays line by line to the end of the input. Throws FileError when there is no more to read after a failure.
void PlayLines(int input, const Output& output, Session& session) {
  LineInput lines(input, "standard input");
  while (output.Error() == 0) {
    const std::optional<std::string> line = lines.Next();
    if (!line) {
      return;
    }
    session.Play(*line);
  }
}

// Returns why the session has failed, a line each; none when it has not.
std::vector<std::string> RunSession(const Arguments& arguments, int input, Output& output, Masker& secrets,
                                    Channel& channel) {
  const SessionMeans means{arguments.Text(kProject), arguments.Text(kStates), arguments.Has(kReadOnly)};
  const Project project = ReadProject(means.projectFile, ModuleFolder(arguments));
  std::unique_ptr<StateStore> states = std::make_unique<StateMemory>();
  if (!means.stateFolder.empty()) {
    states = std::make_unique<StateFolder>(means.stateFolder);
  }
  Session session(means, project, *states, secrets, channel);
  session.Start();
  std::vector<std::string> problems;
  try {
    PlayLines(input, output, session);
  } catch (const FileError& error) {
    problems.emplace_back(error.what());
  }
  for (const std::string& unkept : session.Stop()) {
    problems.push_back(unkept);
  }
  return problems;
}

ExitStatus HostProcess(const Arguments& arguments, Console& console) {
  const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  const FileDescriptor input = TakeAway(STDIN_FILENO, nothing.Get());
  const FileDescriptor lines = TakeAway(STDOUT_FILENO, STDERR_FILENO);
  Output output(lines.Get());
  Masker secrets(arguments.Has(kShowSecrets));
  Channel channel(output, secrets);
  try {
    const std::vector<std::string> problems = RunSession(arguments, input.Get(), output, secrets, channel);
    for (const std::string& problem : problems) {
      console.Complain(problem);
    }
    return problems.empty() ? ExitStatus::Good : ExitStatus::Failed;
  } catch (const HostError& error) {
    // What a driver says about its start may hold a secret.
    console.Complain(secrets.Text(error.what()));
    channel.Failed(secrets.Text(error.what()));
    return ExitStatus::Wrong;
  } catch (const std::exception& error) {
    channel.Failed(secrets.Text(error.what()));
    throw;
  }
}

}  // namespace

Command MakeHostProcess() {
  return {kHostProcess,
          "Play requests as JSON lines to the drivers of a project",
          {kProject, kStates, kModuleFolder, kShowSecrets, kReadOnly},
          "",
          &HostProcess};
}

}  // namespace devhost

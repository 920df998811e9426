#include "tests/scripts/Transcript.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "tests/support/ReadPipe.h"
#include "tests/support/ScratchFolder.h"

extern char** environ;

namespace testsupport {

namespace {

void Replace(std::string& text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
}

// Replaces text that differs from run to run and from machine to machine with names.
std::string Normal(std::string output, const std::string& folder) {
  Replace(output, folder, "{project}");
  Replace(output, MODULE_FOLDER, "{modules}");
  Replace(output, TEST_MODULE_FOLDER, "{test-modules}");
  static const std::regex kTime("[A-Z][a-z]+day, [A-Z][a-z]+, [0-9]{2} [0-9]{4} at [0-9]{2}:[0-9]{2}:[0-9]{2}");
  return std::regex_replace(output, kTime, "{time}");
}

std::vector<std::string> Environment() {
  std::vector<std::string> variables = {"TEST_MODULES=" TEST_MODULE_FOLDER};
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (text.compare(0, 5, "PATH=") == 0) {
      variables.push_back("PATH=" PROGRAM_FOLDER ":" SOURCE_FOLDER "/examples/tool:" + text.substr(5));
    } else if (text.compare(0, 3, "LC_") != 0 && text.compare(0, 5, "LANG=") != 0) {
      variables.push_back(text);
    }
  }
  return variables;
}

pid_t Spawn(const std::string& command, int output) {
  std::vector<std::string> variables = Environment();
  std::vector<char*> environment;
  for (std::string& variable : variables) {
    environment.push_back(variable.data());
  }
  environment.push_back(nullptr);
  std::string shell = "sh";
  std::string option = "-c";
  std::string text = command;
  char* arguments[] = {shell.data(), option.data(), text.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&actions, output, 1);
  ::posix_spawn_file_actions_adddup2(&actions, output, 2);
  ::posix_spawnattr_init(&attributes);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  pid_t child = -1;
  const int error = ::posix_spawn(&child, "/bin/sh", &actions, &attributes, arguments, environment.data());
  ::posix_spawn_file_actions_destroy(&actions);
  ::posix_spawnattr_destroy(&attributes);
  if (error != 0) {
    throw std::runtime_error("sh cannot be started");
  }
  return child;
}

}  // namespace

ShellResult RunShell(const std::string& command, const std::string& folder) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  const pid_t child = Spawn("cd '" + folder + "' && { " + command + "\n}", ends[1]);
  ::close(ends[1]);
  ShellResult result;
  const bool ended = ReadPipe(ends[0], std::chrono::minutes(5), [&](std::string_view block) { result.output += block; });
  ::close(ends[0]);
  if (!ended) {
    ::kill(-child, SIGKILL);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!ended) {
    throw std::runtime_error("this command takes too long: " + command);
  }
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

std::string PlayTranscript(const std::string& transcript, const std::string& folder) {
  std::istringstream lines(transcript);
  std::string line;
  std::string played;
  bool commandSeen = false;
  while (std::getline(lines, line)) {
    const bool command = line.compare(0, 2, "$ ") == 0;
    if (command || !commandSeen) {
      played += line + "\n";
    }
    if (command) {
      commandSeen = true;
      const ShellResult result = RunShell(line.substr(2), folder);
      played += Normal(result.output, folder);
      if (played.back() != '\n') {
        played += '\n';
      }
      if (result.status != 0) {
        played += "[exit status " + std::to_string(result.status) + "]\n";
      }
    }
  }
  return played;
}

std::string UnifiedDifference(const std::string& expected, const std::string& found) {
  if (expected == found) {
    return "";
  }
  const ScratchFolder folder;
  folder.Write("expected", expected);
  folder.Write("found", found);
  return RunShell("diff -u expected found", folder.Path()).output;
}

bool UpdateGoldens() {
  const char* const value = ::getenv("UPDATE_GOLDENS");
  return value != nullptr && std::string(value) == "1";
}

}  // namespace testsupport

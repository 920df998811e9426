// Runs command lines as whole processes: `programs_bench TURNS NAME COMMAND [NAME COMMAND]...`. Prints for each the best
// time from its start to its end, and the most memory that it had. sh runs each command, which costs all of them the same.
// The commands take turns, so that a disturbance of the machine disturbs all of them.

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

extern char** environ;

namespace {

struct Command {
  std::string name;
  std::string line;
  double milliseconds = std::numeric_limits<double>::max();
  long kilobytes = 0;
};

// Runs the command once. Returns false when it has failed.
bool Run(Command& command) {
  char shell[] = "sh";
  char option[] = "-c";
  char* const arguments[] = {shell, option, command.line.data(), nullptr};
  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  if (::posix_spawnp(&child, shell, nullptr, nullptr, arguments, environ) != 0) {
    return false;
  }
  int status = 0;
  struct rusage usage = {};
  if (::wait4(child, &status, 0, &usage) != child || status != 0) {
    return false;
  }
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  command.milliseconds = std::min(command.milliseconds, time.count());
  command.kilobytes = std::max(command.kilobytes, usage.ru_maxrss);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const int turns = argc > 1 ? std::atoi(argv[1]) : 0;
  if (turns < 1 || argc < 4 || argc % 2 != 0) {
    std::fprintf(stderr, "usage: programs_bench TURNS NAME COMMAND [NAME COMMAND]...\n");
    return 2;
  }
  std::vector<Command> commands;
  for (int i = 2; i < argc; i += 2) {
    commands.push_back({argv[i], argv[i + 1]});
  }
  for (int turn = 0; turn != turns; ++turn) {
    for (Command& command : commands) {
      if (!Run(command)) {
        std::fprintf(stderr, "programs_bench: %s has failed: %s\n", command.name.c_str(), command.line.c_str());
        return 1;
      }
    }
  }
  for (const Command& command : commands) {
    std::printf("%s\t%.2f\t%.1f\n", command.name.c_str(), command.milliseconds,
                static_cast<double>(command.kilobytes) / 1024);
  }
  return 0;
}

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "devhost/commands/Commands.h"
#include "devhost/engine/WatchedProcess.h"

namespace {

// A standard descriptor that is closed would be given to the next file that is opened, and output would go into that file.
// What takes its place fails when it is used.
void OccupyStandardDescriptors() {
  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) == -1) {
      ::open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY);
    }
  }
}

// Ends the process by this signal once its handler has returned, so that a shell sees it.
void EndBy(int signal) {
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

// A reader that goes away, or a file that reaches the size that the process may write, makes writing fail instead of ending
// the process with drivers loaded. The signal that somebody else sends ends the process as any other does.
void OnFailedWrite(int signal, siginfo_t* info, void*) {
  if (info->si_pid != ::getpid()) {
    EndBy(signal);
  }
}

// Whatever signal ends this process or a program that it starts, no core file is written: it would hold secrets. The limit
// is one byte, because a system that hands cores to a program obeys that limit and not 0.
void AllowNoCoreFile() {
  struct rlimit core = {};
  ::getrlimit(RLIMIT_CORE, &core);
  core.rlim_cur = std::min<rlim_t>(core.rlim_max, 1);
  ::setrlimit(RLIMIT_CORE, &core);
}

// All other signals that end a process do so by default, at once. Nothing has to be cleaned up: secrets are in memory only,
// and programs end with this process (KeptProcess). Programs that drivers start do not inherit a handler, as they would
// inherit "ignore".
void HandleSignals() {
  struct sigaction action = {};
  action.sa_sigaction = OnFailedWrite;
  action.sa_flags = SA_RESTART | SA_SIGINFO;
  ::sigaction(SIGPIPE, &action, nullptr);
  ::sigaction(SIGXFSZ, &action, nullptr);
}

// A check of "devhost conform" is a process of its own, and the one that waits for its result learns how it ended. The
// console loads no driver: its host process does, which is watched.
bool NeedsNoWatch(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "serve") == 0) {
    return true;
  }
  return std::any_of(argv, argv + argc, [](const char* word) { return std::strcmp(word, "--run-check") == 0; });
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardDescriptors();
  AllowNoCoreFile();
  if (!NeedsNoWatch(argc, argv)) {
    devhost::WatchedProcess::Begin();
  }
  HandleSignals();
  devhost::Console console(STDOUT_FILENO, STDERR_FILENO);
  const int status = static_cast<int>(devhost::RunCommandLine(argc, argv, console));
  devhost::WatchedProcess::TellEnd(status);
  return status;
}

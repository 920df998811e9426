#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "devhost/commands/Commands.h"

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

// A reader that goes away makes writing fail instead of ending the process with drivers loaded. Programs that drivers start
// do not inherit a handler, as they would inherit "ignore".
void SurviveClosedPipes() {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGPIPE, &action, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardDescriptors();
  SurviveClosedPipes();
  devhost::Console console(STDOUT_FILENO, STDERR_FILENO);
  return static_cast<int>(devhost::RunCommandLine(argc, argv, console));
}

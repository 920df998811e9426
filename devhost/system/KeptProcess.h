#ifndef DEVHOST_SYSTEM_KEPT_PROCESS_H
#define DEVHOST_SYSTEM_KEPT_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// What a new process becomes.
struct ProcessImage {
  std::string program;                   // a path
  std::vector<std::string> arguments;    // the program's name first
  std::vector<std::string> environment;  // NAME=value, all of it
  int folder = -1;                       // descriptor of its working folder, -1 for the current one; borrowed
  int input = -1;                        // descriptor for standard input, -1 for nothing to read; borrowed
  int output = -1;                       // descriptor for standard output and error; borrowed
  bool privateFiles = false;             // only this user may read the files that it makes (umask 077)
};

// A program that runs, with all processes that it starts. None of them outlives this object or the process that made it,
// however that ends: by SIGKILL, too. Only a process that became another user, which this user may not kill, can.
//
// Between the two stand two keepers, processes of their own. The inner one starts the program, adopts what the program
// leaves behind, and kills all of it when the program ends, when it is told to, or when its maker or the outer keeper is
// gone. The outer one does the same when the inner one is gone. What the program started may be left behind when both
// keepers are killed before one of them is done, which takes milliseconds; the program itself ends then, too. A death signal
// that the program asks for could not do that: the program's own children would live on, a program with file capabilities
// loses it, and it comes from a thread instead of a process. The keepers are forks, so they need no program that would have
// to be found.
//
// Not a namespace of process ids, which the system would end as a whole: an ordinary user gets one only with a namespace of
// users, in which sudo does not work and ssh refuses the system's files, and the program would know its processes by other
// ids than everybody else.
//
// The program starts as from a shell: with no signal blocked or ignored and no descriptor but the standard ones. It is in a
// session of its own, without a terminal.
class KeptProcess {
 public:
  // Starts the program. Throws std::system_error with the reason when the system does not start it.
  explicit KeptProcess(const ProcessImage& image);
  ~KeptProcess();
  KeptProcess(const KeptProcess&) = delete;
  KeptProcess& operator=(const KeptProcess&) = delete;

  // Its id. It may belong to another process once this one has ended: use Signal to send signals.
  pid_t Pid() const { return m_pid; }
  // Sends a signal to the program and its process group, unless the program has ended.
  void Signal(int signal);
  // Waits at most that long. Returns true as soon as the program has ended; nothing that it started is left then.
  bool WaitForEnd(std::chrono::milliseconds wait);
  // Readable once the program has ended, for poll. Borrowed.
  int EndEvent() const { return m_control.Get(); }
  // Kills the program if it has not ended, and all that it started, and waits until they are gone.
  void End();

  // How the program ended, as waitpid says it. Nothing before its end, and when the keeper was killed.
  std::optional<int> WaitStatus() const { return m_waitStatus; }

 private:
  void ReadEnd();
  void ReapKeeper();

  FileDescriptor m_control;  // a socket, whose other end the keeper has
  pid_t m_keeper = -1;
  pid_t m_pid = -1;
  bool m_hasEnded = false;
  std::optional<int> m_waitStatus;
};

}  // namespace devhost

#endif

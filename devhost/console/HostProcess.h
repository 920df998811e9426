#ifndef DEVHOST_CONSOLE_HOST_PROCESS_H
#define DEVHOST_CONSOLE_HOST_PROCESS_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// A program with pipes for its standard descriptors, in a process group and session of its own: signals that a terminal
// sends to the console do not reach it. It inherits no other descriptor.
//
// It is not a KeptProcess. When the console is killed, that one would be killed as well; this one sees the end of its input,
// and keeps its drivers' states.
class HostProcess {
 public:
  // Starts it. `words` are a path and the arguments, the program's name first. Throws std::system_error.
  HostProcess(const std::string& program, const std::vector<std::string>& words);
  // Kills it, if it has not ended.
  ~HostProcess();
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;

  pid_t Pid() const { return m_pid; }
  // The ends of the pipes, which do not block. Borrowed.
  int Input() const { return m_input.Get(); }    // -1 once it is closed
  int Output() const { return m_output.Get(); }  // standard output
  int Errors() const { return m_errors.Get(); }

  // The program sees the end of its input: it is to stop.
  void CloseInput() { m_input.Close(); }
  // Has whoever watches the process say on standard error which call into a driver is under way.
  void AskForCall() const;
  // Kills the process with its group, unless its end was seen.
  void Kill();
  // Whether it has ended; never waits.
  bool HasEnded();
  // After its end: in what way, for people.
  std::string HowItEnded() const;
  // After its end: its exit status, or 1 when a signal has ended it.
  int ExitStatus() const;

 private:
  pid_t m_pid = -1;
  bool m_hasEnded = false;
  int m_status = 0;
  FileDescriptor m_input;
  FileDescriptor m_output;
  FileDescriptor m_errors;
};

}  // namespace devhost

#endif

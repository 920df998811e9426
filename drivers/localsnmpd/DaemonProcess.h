#ifndef DRIVERS_LOCALSNMPD_DAEMON_PROCESS_H
#define DRIVERS_LOCALSNMPD_DAEMON_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace drivers {

// One process of a program, from its start until it is reaped. It never outlives this object or the host, however the host
// ends.
//
// A thread of its own, the keeper, starts it and waits for it, so that a process that ends is reaped at once. The keeper
// must not end before the process: the process has asked the system to be killed when the thread that started it ends. The
// keeper calls nothing of the host.
class DaemonProcess {
 public:
  struct Command {
    std::string program;                   // absolute path
    std::vector<std::string> arguments;    // without the program's name
    std::vector<std::string> environment;  // NAME=value, all of it
    int folder;                            // descriptor of the working folder; borrowed
    int output;                            // descriptor for standard output and error; borrowed
  };

  // Starts the program. Returns null, and the system's error number in `error`, when it cannot be started.
  static std::unique_ptr<DaemonProcess> Start(const Command& command, int& error);

  // Kills the process if it has not ended, and reaps it.
  ~DaemonProcess();
  DaemonProcess(const DaemonProcess&) = delete;
  DaemonProcess& operator=(const DaemonProcess&) = delete;

  // Its id. It may belong to another process once this one has ended: use Signal to send signals.
  pid_t GetPid() const { return m_pid; }
  // Sends a signal, unless the process has ended.
  void Signal(int signal);
  // Waits at most that long. Returns true as soon as the process has ended.
  bool WaitForEnd(std::chrono::milliseconds wait);
  // How it ended, in words: "exit status 1", "killed by signal 9 (Killed)".
  std::string DescribeEnd();

 private:
  struct Image;
  enum class State { Starting, Running, Ended, NotStarted };

  DaemonProcess() = default;
  void Keep(const Image& image);
  void Reap();
  void Enter(State state);

  std::mutex m_mutex;
  std::condition_variable m_changed;
  State m_state = State::Starting;
  pid_t m_pid = 0;
  int m_error = 0;       // why it was not started
  int m_waitStatus = 0;  // as waitpid gave it
  bool m_isStatusKnown = false;
  std::thread m_keeper;
};

}  // namespace drivers

#endif

#ifndef DRIVERS_SSHSNMPD_KEY_AGENT_SOCKET_H
#define DRIVERS_SSHSNMPD_KEY_AGENT_SOCKET_H

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "devhost/system/FileDescriptor.h"
#include "drivers/sshsnmpd/Deadline.h"

namespace drivers {

// A connection to the agent that holds SSH keys (SSH_AUTH_SOCK), which is cut at a deadline. The library waits without one
// for what that agent answers; only another thread can end that.
class KeyAgentSocket {
 public:
  // Throws SshError(Unreachable) when the agent does not take the connection in time.
  explicit KeyAgentSocket(const Deadline& deadline);
  // From here on the connection is not cut any more.
  ~KeyAgentSocket();
  KeyAgentSocket(const KeyAgentSocket&) = delete;
  KeyAgentSocket& operator=(const KeyAgentSocket&) = delete;

  // Another descriptor of the connection, which the caller owns; -1 where there is no agent. Throws SshError(Unreachable)
  // when the process has none left.
  int Duplicate() const;
  bool WasCut() const { return m_wasCut; }

 private:
  void Watch(const Deadline& deadline);

  const devhost::FileDescriptor m_socket;
  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_hasEnded = false;
  std::atomic<bool> m_wasCut{false};
  std::thread m_watch;
};

}  // namespace drivers

#endif

#ifndef DRIVERS_SSHSNMPD_PIPE_SIGNAL_BLOCK_H
#define DRIVERS_SSHSNMPD_PIPE_SIGNAL_BLOCK_H

#include <signal.h>

namespace drivers {

// While it lives, the calling thread survives writing to a connection that the other side has closed: the library writes
// without asking the system to leave out SIGPIPE, and the process belongs to the host.
class PipeSignalBlock {
 public:
  PipeSignalBlock() noexcept;
  ~PipeSignalBlock();
  PipeSignalBlock(const PipeSignalBlock&) = delete;
  PipeSignalBlock& operator=(const PipeSignalBlock&) = delete;

 private:
  sigset_t m_former;
  bool m_wasPending;
};

}  // namespace drivers

#endif

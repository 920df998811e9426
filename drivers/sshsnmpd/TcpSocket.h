#ifndef DRIVERS_SSHSNMPD_TCP_SOCKET_H
#define DRIVERS_SSHSNMPD_TCP_SOCKET_H

#include <cstdint>
#include <string>

#include "devhost/system/FileDescriptor.h"
#include "drivers/sshsnmpd/Deadline.h"

namespace drivers {

// Connects to `host`, a name or an address, and returns the socket: it does not block, sends small packets at once, and the
// system notices within half a minute that nobody is at the other end any more. All addresses of the name are tried. Throws
// SshError(Unreachable). The name is resolved by the system; when that takes too long, the system goes on with it by itself.
devhost::FileDescriptor ConnectTcp(const std::string& host, std::uint16_t port, const Deadline& deadline);

// A second descriptor of a socket, for a library that closes it in some cases and in others does not, and does not tell. It
// is closed with this object unless the library has done so: its number may belong to somebody else by then.
class LentSocket {
 public:
  // `socket` is borrowed and outlives this object. Throws SshError(Unreachable) when the process has no descriptor left.
  explicit LentSocket(int socket);
  ~LentSocket();
  LentSocket(const LentSocket&) = delete;
  LentSocket& operator=(const LentSocket&) = delete;

  int Get() const { return m_lent; }

 private:
  const int m_socket;
  const int m_lent;
};

}  // namespace drivers

#endif

#ifndef DRIVERS_LOCALSNMPD_PORT_RESERVATION_H
#define DRIVERS_LOCALSNMPD_PORT_RESERVATION_H

#include <cstdint>

#include "devhost/system/FileDescriptor.h"

namespace drivers {

// A free UDP port of 127.0.0.1 that no other device on this machine chooses while this object lives.
//
// The port itself stays unbound, for the daemon. A local socket whose name contains the number keeps other devices away:
// such names, like ports, belong to a network namespace and vanish with their process. The range is one from which the
// system gives no ports to programs that ask for any.
class PortReservation {
 public:
  PortReservation();

  // The port, or 0 when none was free.
  std::uint16_t GetPort() const { return m_port; }

 private:
  devhost::FileDescriptor m_name;
  std::uint16_t m_port = 0;
};

}  // namespace drivers

#endif

#ifndef DRIVERS_LOCALSNMPD_PORT_RESERVATION_H
#define DRIVERS_LOCALSNMPD_PORT_RESERVATION_H

#include <cstdint>

#include "devhost/system/FileDescriptor.h"

namespace drivers {

// A free UDP port of 127.0.0.1 that no other device on this machine chooses while this object lives.
//
// The port itself stays unbound, for the daemon. What keeps other devices off is a local socket whose name holds the number:
// the system knows such names per network, as it knows ports, and drops them with their process. The ports are taken from a
// range from which the system gives none to programs that ask for any.
class PortReservation {
 public:
  PortReservation();

  // 0 when no port was free.
  std::uint16_t GetPort() const { return m_port; }

 private:
  devhost::FileDescriptor m_name;
  std::uint16_t m_port = 0;
};

}  // namespace drivers

#endif

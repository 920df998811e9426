#ifndef DRIVERS_LOCALSNMPD_UDP_PORT_H
#define DRIVERS_LOCALSNMPD_UDP_PORT_H

#include <netinet/in.h>
#include <sys/types.h>

#include <cstdint>

namespace drivers {

// The port of 127.0.0.1.
sockaddr_in LocalAddress(std::uint16_t port);

// Whether no process has the UDP port, on 127.0.0.1 or on all addresses.
bool IsUdpPortFree(std::uint16_t port);

// Whether the process has the UDP port of 127.0.0.1.
bool OwnsUdpPort(pid_t process, std::uint16_t port);

}  // namespace drivers

#endif

#ifndef TESTS_E2E_OPEN_PORTS_H
#define TESTS_E2E_OPEN_PORTS_H

#include <sys/types.h>

#include <set>
#include <string>

namespace e2e {

// Returns the ports on which a process listens: "udp:40161".
std::set<std::string> OpenPorts(pid_t pid);

}  // namespace e2e

#endif

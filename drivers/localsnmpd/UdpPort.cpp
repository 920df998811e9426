#include "drivers/localsnmpd/UdpPort.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <system_error>

#include "devhost/system/FileDescriptor.h"

namespace drivers {

namespace {

// The sockets, by their inode numbers, that are bound to the port of 127.0.0.1.
std::set<std::string> SocketsOf(std::uint16_t port) {
  char local[32];
  std::snprintf(local, sizeof local, "%08X:%04X", static_cast<unsigned int>(htonl(INADDR_LOOPBACK)),
                static_cast<unsigned int>(port));
  std::set<std::string> inodes;
  std::ifstream table("/proc/net/udp");
  std::string line;
  while (std::getline(table, line)) {
    // sl, local, remote, state, queues, timer, retransmits, user, time-out, inode
    std::istringstream stream(line);
    std::array<std::string, 10> fields;
    for (std::string& field : fields) {
      stream >> field;
    }
    if (fields[1] == local) {
      inodes.insert(fields[9]);
    }
  }
  return inodes;
}

}  // namespace

sockaddr_in LocalAddress(std::uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

bool IsUdpPortFree(std::uint16_t port) {
  const devhost::FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = LocalAddress(port);
  return socket.IsOpen() && ::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool OwnsUdpPort(pid_t process, std::uint16_t port) {
  const std::set<std::string> inodes = SocketsOf(port);
  std::error_code error;
  const std::string folder = "/proc/" + std::to_string(process) + "/fd";
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    std::error_code gone;
    const std::string target = std::filesystem::read_symlink(entry->path(), gone).string();
    const std::string prefix = "socket:[";
    if (!gone && target.compare(0, prefix.size(), prefix) == 0 &&
        inodes.count(target.substr(prefix.size(), target.size() - prefix.size() - 1)) != 0) {
      return true;
    }
  }
  return false;
}

}  // namespace drivers

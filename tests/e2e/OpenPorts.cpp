#include "tests/e2e/OpenPorts.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace e2e {
namespace {

namespace fs = std::filesystem;

// Returns the inodes of a process's sockets.
std::set<std::string> Sockets(pid_t pid) {
  std::set<std::string> inodes;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/" + std::to_string(pid) + "/fd")) {
    const std::string target = fs::read_symlink(entry).string();
    if (target.rfind("socket:[", 0) == 0) {
      inodes.insert(target.substr(8, target.size() - 9));
    }
  }
  return inodes;
}

}  // namespace

std::set<std::string> OpenPorts(pid_t pid) {
  const std::set<std::string> own = Sockets(pid);
  std::set<std::string> ports;
  for (const std::string protocol : {"udp", "udp6", "tcp", "tcp6"}) {
    std::ifstream table("/proc/" + std::to_string(pid) + "/net/" + protocol);
    std::string line;
    std::getline(table, line);  // the headings
    while (std::getline(table, line)) {
      std::string number, local, remote, state, queues, timer, retries, user, timeout, inode;
      std::istringstream(line) >> number >> local >> remote >> state >> queues >> timer >> retries >> user >> timeout >>
          inode;
      const bool listens = state == (protocol[0] == 'u' ? "07" : "0A");
      if (listens && own.count(inode) != 0) {
        ports.insert(protocol + ":" + std::to_string(std::stoul(local.substr(local.rfind(':') + 1), nullptr, 16)));
      }
    }
  }
  return ports;
}

}  // namespace e2e

#include "tests/drivers/support/SmallDisk.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>

namespace {

bool WriteLine(const char* path, const std::string& line) {
  std::ofstream stream(path);
  stream << line << std::flush;
  return stream.good();
}

// Gives the process mounts of its own: root may, others may where they may make themselves root of a new user namespace.
bool LeaveTheMountsOfOthers() {
  if (::unshare(CLONE_NEWNS) == 0) {
    return true;
  }
  const std::string user = std::to_string(::geteuid());
  const std::string group = std::to_string(::getegid());
  return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && WriteLine("/proc/self/setgroups", "deny") &&
         WriteLine("/proc/self/uid_map", user + " " + user + " 1") &&
         WriteLine("/proc/self/gid_map", group + " " + group + " 1");
}

}  // namespace

bool MountSmallDisk(const std::string& path) {
  return LeaveTheMountsOfOthers() && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("none", path.c_str(), "tmpfs", 0, "size=64k") == 0;
}

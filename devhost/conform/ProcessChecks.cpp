// Group "process": what a driver does to the process that it lives in with others.
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

mode_t FileMask() {
  const mode_t mask = ::umask(077);
  ::umask(mask);
  return mask;
}

void KeepsTheFolder(Trial& trial) {
  const std::filesystem::path folder = std::filesystem::current_path();
  const mode_t mask = FileMask();
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) { CallAll(device); });
  bench.Stop();
  std::error_code error;
  const bool isThere = std::filesystem::current_path(error) == folder && !error;
  const bool isMask = FileMask() == mask;
  // With --in-process, others come after this one.
  std::filesystem::current_path(folder);
  ::umask(mask);
  Expect(isThere, "the working folder of the process is another one", "chdir");
  Expect(isMask, "the file mask of the process is another one", "umask");
}

// What a descriptor leads to.
using Target = std::pair<dev_t, ino_t>;

std::map<int, Target> Descriptors() {
  std::map<int, Target> descriptors;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    const int descriptor = std::stoi(entry.path().filename().string());
    struct stat status = {};
    // The folder's own is closed when the list is complete.
    if (::fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode)) {
      descriptors[descriptor] = {status.st_dev, status.st_ino};
    }
  }
  return descriptors;
}

void ClosesNothingOfOthers(Trial& trial) {
  Bench bench(trial);
  const std::map<int, Target> before = Descriptors();
  bench.ActOnDevice([&](Device& device) { CallAll(device); });
  bench.Stop();
  const std::map<int, Target> after = Descriptors();
  for (const auto& [descriptor, target] : before) {
    const auto found = after.find(descriptor);
    Expect(found != after.end() && found->second == target,
           "the descriptor " + std::to_string(descriptor) + ", which was open before there was a driver, " +
               (found == after.end() ? "is closed" : "leads somewhere else"),
           "close");
  }
}

// Makes this process the parent of what its children leave behind.
class Adoption {
 public:
  Adoption() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }
  ~Adoption() { ::prctl(PR_SET_CHILD_SUBREAPER, 0); }
  Adoption(const Adoption&) = delete;
  Adoption& operator=(const Adoption&) = delete;
};

std::set<pid_t> Children() {
  std::set<pid_t> children;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream list(thread.path() / "children");
    children.insert(std::istream_iterator<pid_t>(list), std::istream_iterator<pid_t>());
  }
  return children;
}

void LeavesNoProcess(Trial& trial) {
  const Adoption adoption;
  const std::set<pid_t> before = Children();
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) { CallAll(device); });
  bench.Stop();
  for (const pid_t child : Children()) {
    if (before.count(child) == 0) {
      std::string name;
      std::getline(std::ifstream("/proc/" + std::to_string(child) + "/comm"), name);
      throw Violation("a process that the driver has started, " + Quoted(name) +
                          ", is there when the driver has been destroyed, or nobody has waited for its end",
                      "destructor");
    }
  }
}

}  // namespace

std::vector<Check> ProcessChecks() {
  return {
      {"process-folder", Severity::Practice, Level::Basic, "",
       "A driver leaves the working folder and the file mask of the process as they are.",
       "They belong to the host and to all drivers in it, and so do relative paths and the modes of new files. Use "
       "absolute\n"
       "paths, and give open(2) a mode.",
       &KeepsTheFolder},
      {"process-descriptors", Severity::Practice, Level::Basic, "", "A driver closes no descriptor of others.",
       "The number is given to the next file that somebody opens, and their bytes go there. Often a descriptor is closed\n"
       "that was never opened and is 0, or everything is closed after a fork in the parent.",
       &ClosesNothingOfOthers},
      {"process-left", Severity::Practice, Level::Basic, "", "No process that a driver has started outlives the driver.",
       "The next driver would start another one beside it. End it in the destructor, and wait for it.", &LeavesNoProcess},
  };
}

}  // namespace devhost

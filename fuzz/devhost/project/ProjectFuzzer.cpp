// Reads any text as a project file. It is accepted, or refused in one line that begins with the place. The file is in
// memory.
#include <sys/mman.h>
#include <unistd.h>

#include <set>

#include "devhost/project/Project.h"
#include "fuzz/support/Input.h"

namespace {

class FileInMemory {
 public:
  FileInMemory() : m_descriptor(::memfd_create("project", 0)) {}
  ~FileInMemory() { ::close(m_descriptor); }

  // Returns the path of the file.
  std::string Fill(const std::uint8_t* data, std::size_t size) {
    const bool filled =
        ::ftruncate(m_descriptor, 0) == 0 && ::pwrite(m_descriptor, data, size, 0) == static_cast<ssize_t>(size);
    fuzz::Require(filled, "no memory for the file");
    return "/proc/self/fd/" + std::to_string(m_descriptor);
  }

 private:
  int m_descriptor;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static FileInMemory file;
  const std::string path = file.Fill(data, size);
  try {
    const devhost::Project project = devhost::ReadProject(path, "/nowhere");
    std::set<unsigned long> ids;
    for (const devhost::DriverEntry& driver : project.drivers) {
      fuzz::Require(driver.id <= 0xffffffffUL && ids.insert(driver.id).second, "two drivers with one id");
    }
    fuzz::Require(!ids.empty(), "no driver");
  } catch (const devhost::ProjectError& error) {
    const std::string what = error.what();
    fuzz::Require(what.compare(0, path.size() + 1, path + ":") == 0, "no place: " + what);
    fuzz::Require(what.find('\n') == std::string::npos, "more than one line: " + what);
  }
  return 0;
}

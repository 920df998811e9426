#include "devhost/system/MemoryFile.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace devhost {

namespace {

[[noreturn]] void Fail() {
  throw std::system_error(errno, std::generic_category(), "cannot make a file in memory");
}

}  // namespace

MemoryFile::MemoryFile(std::string_view text) : m_file(::memfd_create("devhost", MFD_CLOEXEC)) {
  if (!m_file.IsOpen() || ::fchmod(m_file.Get(), S_IRUSR | S_IWUSR) != 0) {
    Fail();
  }
  while (!text.empty()) {
    const ssize_t written = ::write(m_file.Get(), text.data(), text.size());
    if (written < 0 && errno != EINTR) {
      Fail();
    }
    text.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
  }
  ::lseek(m_file.Get(), 0, SEEK_SET);
}

// By the number of this process, because its own descriptors are closed in a program that it starts.
std::string MemoryFile::Path() const {
  return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(m_file.Get());
}

}  // namespace devhost

#include "devhost/console/TokenFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace devhost {

namespace {

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw std::runtime_error("cannot write \"" + path + "\": " + reason);
}

bool IsSame(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace

TokenFile::TokenFile(std::string path, const std::string& text)
    : m_path(std::move(path)),
      m_file(::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
  if (!m_file.IsOpen()) {
    Fail(m_path, errno == EEXIST
                     ? "there is a file of that name already, perhaps of a console that was killed; remove it, or "
                       "name another one"
                     : std::strerror(errno));
  }
  errno = 0;
  if (::write(m_file.Get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    const int error = errno == 0 ? ENOSPC : errno;
    Remove();
    Fail(m_path, std::strerror(error));
  }
}

TokenFile::~TokenFile() {
  Remove();
}

// Somebody may have put a file of their own there since. The open descriptor keeps that from getting the same number.
void TokenFile::Remove() const {
  struct stat own = {};
  struct stat there = {};
  if (::fstat(m_file.Get(), &own) == 0 && ::lstat(m_path.c_str(), &there) == 0 && IsSame(own, there)) {
    ::unlink(m_path.c_str());
  }
}

}  // namespace devhost

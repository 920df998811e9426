#include "devhost/snmpd/IncludedFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <string_view>
#include <system_error>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

namespace {

const std::size_t kMostFiles = 100;
const std::size_t kMostBytes = std::size_t{16} * 1024 * 1024;
const std::size_t kMostEntries = 10000;
const char kTooMuch[] = "the included files are too many or too large";

std::string CannotRead() {
  return "the included file cannot be read: " +
         (errno == ELOOP ? std::string("it is a link") : std::generic_category().message(errno));
}

bool IsConfName(std::string_view name) {
  const std::string_view suffix = ".conf";
  return name.size() > suffix.size() && name.substr(name.size() - suffix.size()) == suffix;
}

// At most `most` bytes more than none; false when the system does not give them.
bool ReadAll(int file, std::size_t most, std::string& text) {
  std::array<char, 65536> part = {};
  while (text.size() <= most) {
    const ssize_t count = ::read(file, part.data(), part.size());
    if (count == 0 || (count < 0 && errno != EINTR)) {
      return count == 0;
    }
    text.append(part.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

int IncludedFiles::Flags() const {
  return m_links == Links::Refused ? O_NOFOLLOW : 0;
}

std::string IncludedFiles::ReadAt(int folder, const std::string& name, const std::string& path, std::vector<File>& files) {
  if (m_count == kMostFiles) {
    return kTooMuch;
  }
  ++m_count;
  const FileDescriptor file(::openat(folder, name.c_str(), Flags() | O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat attributes = {};
  if (!file.IsOpen() || ::fstat(file.Get(), &attributes) != 0) {
    return CannotRead();
  }
  if (!S_ISREG(attributes.st_mode)) {
    return "the included file is not a regular file";
  }
  File read = {path, std::string(), attributes.st_mode};
  if (!ReadAll(file.Get(), kMostBytes - m_bytes, read.text)) {
    return CannotRead();
  }
  if (read.text.size() > kMostBytes - m_bytes) {
    return kTooMuch;
  }
  m_bytes += read.text.size();
  files.push_back(std::move(read));
  return std::string();
}

std::string IncludedFiles::Read(const std::string& path, std::vector<File>& files) {
  return path.empty() || path.front() != '/' ? "the path of an included file must be absolute"
                                             : ReadAt(AT_FDCWD, path, path, files);
}

std::string IncludedFiles::ReadFolder(const std::string& path, std::vector<File>& files) {
  if (path.empty() || path.front() != '/') {
    return "the path of an included folder must be absolute";
  }
  const int descriptor = ::open(path.c_str(), Flags() | O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(descriptor >= 0 ? ::fdopendir(descriptor) : nullptr, &::closedir);
  if (!folder) {
    return "the included folder cannot be read: " + std::generic_category().message(errno);
  }
  std::vector<std::string> names;
  std::size_t entries = 0;
  for (const dirent* entry = ::readdir(folder.get()); entry != nullptr; entry = ::readdir(folder.get())) {
    if (++entries > kMostEntries) {
      return kTooMuch;
    }
    if (IsConfName(entry->d_name)) {
      names.emplace_back(entry->d_name);
    }
  }
  std::sort(names.begin(), names.end());
  std::string wrong;
  for (const std::string& name : names) {
    const std::string found = ReadAt(descriptor, name, path + (path.back() == '/' ? "" : "/") + name, files);
    wrong = wrong.empty() ? found : wrong;
  }
  return wrong;
}

}  // namespace devhost

#include "drivers/localsnmpd/DaemonFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <system_error>
#include <utility>

#include "drivers/localsnmpd/KeptData.h"

namespace drivers {

namespace {

const char kFolderName[] = "daemon";
const char kLogName[] = "log";
const char kLockName[] = "lock";
const char kDataFile[] = "snmpd.conf";
const std::size_t kMostOfLog = std::size_t{1024} * 1024;
const std::size_t kMostOfData = std::size_t{4} * 1024 * 1024;

std::string Reason() {
  return std::generic_category().message(errno);
}

// Makes a new file; what had its name is removed, a link itself and not what it leads to.
devhost::FileDescriptor MakeFile(int folder, const char* name) {
  if (::unlinkat(folder, name, 0) != 0 && errno != ENOENT) {
    return devhost::FileDescriptor();
  }
  return devhost::FileDescriptor(
      ::openat(folder, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_APPEND | O_CLOEXEC, 0600));
}

bool WriteAll(int file, const std::string& text) {
  std::size_t written = 0;
  while (written != text.size()) {
    const ssize_t count = ::write(file, text.data() + written, text.size() - written);
    if (count < 0 && errno != EINTR) {
      return false;
    }
    written += count < 0 ? 0 : static_cast<std::size_t>(count);
  }
  return true;
}

// Replaces a file, or makes it. On failure the old one stays.
bool WriteFile(int folder, const char* name, const std::string& text) {
  const std::string temporary = std::string(name) + ".new";
  const devhost::FileDescriptor file = MakeFile(folder, temporary.c_str());
  if (!file.IsOpen()) {
    return false;
  }
  if (WriteAll(file.Get(), text) && ::renameat(folder, temporary.c_str(), folder, name) == 0) {
    return true;
  }
  const int error = errno;
  ::unlinkat(folder, temporary.c_str(), 0);
  errno = error;
  return false;
}

// Opens a folder, made where it is missing.
devhost::FileDescriptor OpenFolder(int parent, const char* name) {
  if (::mkdirat(parent, name, 0700) != 0 && errno != EEXIST) {
    return devhost::FileDescriptor();
  }
  return devhost::FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Reads a file from its start, at most `most` bytes and little more.
std::string ReadFrom(const devhost::FileDescriptor& file, std::size_t most) {
  std::string text;
  std::array<char, 4096> part = {};
  while (file.IsOpen() && text.size() < most) {
    const ssize_t count = ::pread(file.Get(), part.data(), part.size(), static_cast<off_t>(text.size()));
    if (count <= 0) {
      break;
    }
    text.append(part.data(), static_cast<std::size_t>(count));
  }
  return text;
}

bool IsSame(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

std::string Join(const std::string& folder, const char* name) {
  return folder + (!folder.empty() && folder.back() == '/' ? "" : "/") + name;
}

}  // namespace

DaemonFolder::DaemonFolder(const std::string& folder) : m_folder(folder) {}

std::string DaemonFolder::GetPath() const {
  return Join(m_folder, kFolderName);
}

// The lock is a file of our own, since everybody who may open the folder can lock the folder itself.
std::string DaemonFolder::Lock() {
  struct stat held = {};
  struct stat named = {};
  if (m_lock.IsOpen() && ::fstat(m_lock.Get(), &held) == 0 &&
      ::fstatat(m_daemon.Get(), kLockName, &named, AT_SYMLINK_NOFOLLOW) == 0 && IsSame(held, named)) {
    return std::string();
  }
  if (::fstatat(m_daemon.Get(), kLockName, &named, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISREG(named.st_mode)) {
    return Join(GetPath(), kLockName) + " is not a regular file; remove it, it is made anew";
  }
  devhost::FileDescriptor lock(
      ::openat(m_daemon.Get(), kLockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
  if (!lock.IsOpen() || ::fstat(lock.Get(), &held) != 0 || ::fchmod(lock.Get(), 0600) != 0) {
    return "cannot make " + Join(GetPath(), kLockName) + ": " + Reason();
  }
  if (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    return errno == EWOULDBLOCK ? GetPath() + " is in use by another device; give each device a folder of its own"
                                : "cannot lock " + Join(GetPath(), kLockName) + ": " + Reason();
  }
  if (::fstatat(m_daemon.Get(), kLockName, &named, AT_SYMLINK_NOFOLLOW) != 0 || !IsSame(held, named)) {
    return "somebody replaced " + Join(GetPath(), kLockName);
  }
  // What an earlier folder of that name held is given up only now.
  m_lock = std::move(lock);
  return std::string();
}

std::string DaemonFolder::Prepare() {
  const devhost::FileDescriptor parent(::open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!parent.IsOpen()) {
    return "cannot use " + m_folder + ": " + Reason();
  }
  m_daemon = OpenFolder(parent.Get(), kFolderName);
  struct stat attributes = {};
  if (!m_daemon.IsOpen() || ::fstat(m_daemon.Get(), &attributes) != 0) {
    return "cannot make " + GetPath() + ": " + Reason();
  }
  // Whoever owns a folder can put links into it, which the daemon would follow.
  if (attributes.st_uid != ::geteuid()) {
    return GetPath() + " belongs to another user; remove it, it is made anew";
  }
  if (::fchmod(m_daemon.Get(), 0700) != 0) {
    return "cannot close " + GetPath() + " to others: " + Reason();
  }
  const std::string wrong = Lock();
  if (!wrong.empty()) {
    return wrong;
  }
  for (const char* const name : {kDataName, kKeptName}) {
    if (!OpenFolder(m_daemon.Get(), name).IsOpen()) {
      return "cannot make " + Join(GetPath(), name) + ": " + Reason();
    }
  }
  if (!WriteFile(m_daemon.Get(), kDriverConfigName, "agentXSocket unix:agentx\n")) {
    return "cannot write " + Join(GetPath(), kDriverConfigName) + ": " + Reason();
  }
  m_log = MakeFile(m_daemon.Get(), kLogName);
  const bool isMade = m_log.IsOpen() && ::unlinkat(m_daemon.Get(), kLogName, 0) == 0;
  return isMade ? std::string() : "cannot write " + Join(GetPath(), kLogName) + ": " + Reason();
}

std::string DaemonFolder::KeepData() const {
  const devhost::FileDescriptor data = OpenFolder(m_daemon.Get(), kDataName);
  const devhost::FileDescriptor kept = OpenFolder(m_daemon.Get(), kKeptName);
  const devhost::FileDescriptor stored(::openat(data.Get(), kDataFile, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  const std::string text = ReadFrom(stored, kMostOfData);
  const std::string selected = text.size() < kMostOfData ? SelectKeptData(text) : std::string();
  // What was kept before is better than nothing: the engine would have another id.
  if (!selected.empty() && !WriteFile(kept.Get(), kDataFile, selected)) {
    return "cannot write " + Join(Join(GetPath(), kKeptName), kDataFile) + ": " + Reason();
  }
  return std::string();
}

std::string DaemonFolder::ReadLog() const {
  std::string text = ReadFrom(m_log, kMostOfLog);
  if (text.size() >= kMostOfLog) {
    // A secret that is cut off would not be found in the last line.
    text.resize(text.rfind('\n') + 1);
  }
  return text;
}

}  // namespace drivers

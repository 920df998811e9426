#include "devhost/system/FileText.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

#include "devhost/system/FileDescriptor.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

std::string Reason(int error) {
  return std::generic_category().message(error);
}

constexpr std::chrono::seconds kPatienceWithPipes{5};
constexpr char kNotRegular[] = "it is not a regular file";
constexpr char kHoldsNul[] = "the name holds a NUL byte";

// Never waits for a pipe.
int Open(int folder, const std::string& path, int flags) {
  if (path.find('\0') != std::string::npos) {
    throw FileError(path, kHoldsNul);
  }
  const int descriptor = ::openat(folder, path.c_str(), flags | O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) {
    const bool isLink = errno == ELOOP && (flags & O_NOFOLLOW) != 0;
    throw FileError(path, isLink ? "it is a symbolic link" : errno == ENXIO ? kNotRegular : Reason(errno));
  }
  return descriptor;
}

std::string ReadRegular(int folder, const std::string& path, int flags, std::size_t maximumSize) {
  const FileDescriptor file(Open(folder, path, flags));
  struct stat status = {};
  if (::fstat(file.Get(), &status) == 0 && !S_ISREG(status.st_mode)) {
    throw FileError(path, S_ISDIR(status.st_mode) ? Reason(EISDIR) : kNotRegular);
  }
  return ReadDescriptorText(file.Get(), path, maximumSize);
}

// Waits until a pipe that was opened without blocking has something to read or has had a writer.
bool HasWriterInTime(int pipe) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + kPatienceWithPipes;
  struct pollfd ready = {pipe, POLLIN, 0};
  int count = -1;
  do {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    count = ::poll(&ready, 1, left > 0 ? static_cast<int>(left) : 0);
  } while (count < 0 && errno == EINTR);
  return count != 0;
}

// Makes what was opened without blocking an ordinary descriptor, and returns what was read from it meanwhile. A pipe that
// nobody has opened for writing would keep its reader for ever.
std::string BeginPipe(int descriptor, const std::string& path) {
  std::string begun;
  struct stat status = {};
  if (::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode) && !HasWriterInTime(descriptor)) {
    // Only this tells a writer that takes its time from none.
    char byte = 0;
    const ssize_t got = ::read(descriptor, &byte, 1);
    if (got == 0) {
      throw FileError(path, "it is a pipe, and nobody writes into it");
    }
    begun.assign(got > 0 ? 1 : 0, byte);
  }
  ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
  return begun;
}

}  // namespace

FileError::FileError(const std::string& path, const std::string& reason)
    : std::runtime_error("cannot read " + Quoted(path) + ": " + reason), m_reason(reason) {}

std::string ReadDescriptorText(int descriptor, const std::string& name, std::size_t maximumSize) {
  constexpr std::size_t kBlock = 65536;
  std::string text;
  struct stat status = {};
  if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0) {
    // One more than the file holds, so that its end is seen without another doubling.
    text.reserve(std::min(static_cast<std::size_t>(status.st_size), maximumSize) + kBlock);
  }
  for (;;) {
    const std::size_t used = text.size();
    text.resize(used + kBlock);
    const ssize_t got = ::read(descriptor, &text[used], kBlock);
    if (got < 0 && errno != EINTR) {
      throw FileError(name, Reason(errno));
    }
    text.resize(used + (got > 0 ? static_cast<std::size_t>(got) : 0));
    if (got == 0) {
      return text;
    }
    if (text.size() > maximumSize) {
      throw FileError(name, "it is larger than the " + std::to_string(maximumSize) + " bytes that are allowed");
    }
  }
}

std::string ReadFileText(const std::string& path, std::size_t maximumSize) {
  const FileDescriptor file(Open(AT_FDCWD, path, 0));
  const std::string begun = BeginPipe(file.Get(), path);
  std::string text = ReadDescriptorText(file.Get(), path, maximumSize);
  text.insert(0, begun);
  return text;
}

NamedText ReadNamedText(const std::string& path, std::size_t maximumSize) {
  NamedText read{path == "-" ? "standard input" : path, ""};
  read.text = path == "-" ? ReadDescriptorText(STDIN_FILENO, read.name, maximumSize) : ReadFileText(path, maximumSize);
  constexpr char kByteOrderMark[] = "\xef\xbb\xbf";
  if (StartsWith(read.text, kByteOrderMark)) {
    read.text.erase(0, 3);
  }
  return read;
}

std::string ReadRegularFile(const std::string& path) {
  return ReadRegular(AT_FDCWD, path, 0, kMaximumFileSize);
}

std::string ReadRegularFileAt(int folder, const std::string& name, std::size_t maximumSize) {
  return ReadRegular(folder, name, O_NOFOLLOW, maximumSize);
}

std::string WhyUnreadable(const std::string& path) {
  if (path.find('\0') != std::string::npos) {
    return kHoldsNul;
  }
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0 || ::access(path.c_str(), R_OK) != 0) {
    return Reason(errno);
  }
  return S_ISDIR(status.st_mode) ? Reason(EISDIR) : std::string();
}

std::string WhyNoRegularFile(const std::string& path) {
  const std::string reason = WhyUnreadable(path);
  struct stat status = {};
  if (reason.empty() && (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))) {
    return kNotRegular;
  }
  return reason;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) {
    return ".";
  }
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string PathIn(const std::string& folder, const std::string& path) {
  if (folder == "." || (!path.empty() && path.front() == '/')) {
    return path;
  }
  return folder.back() == '/' ? folder + path : folder + "/" + path;
}

}  // namespace devhost

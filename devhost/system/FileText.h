#ifndef DEVHOST_SYSTEM_FILE_TEXT_H
#define DEVHOST_SYSTEM_FILE_TEXT_H

#include <cstddef>
#include <stdexcept>
#include <string>

namespace devhost {

// A file that cannot be read; the text names the file and the reason, in one line.
class FileError : public std::runtime_error {
 public:
  FileError(const std::string& path, const std::string& reason);
  // The reason alone.
  const std::string& Reason() const { return m_reason; }

 private:
  std::string m_reason;
};

// The most that is read from one file. It keeps an endless one (/dev/zero, a pipe that never closes) from filling the
// memory.
inline constexpr std::size_t kMaximumFileSize = std::size_t{256} * 1024 * 1024;

// The whole content of a file, byte for byte. Throws FileError when it is missing, a folder, unreadable or larger than
// `maximumSize`, or a pipe that nobody writes into: one without a writer is waited for five seconds, one with a writer
// as long as it takes.
std::string ReadFileText(const std::string& path, std::size_t maximumSize = kMaximumFileSize);

// The same for an open file descriptor, which stays open; `name` is for messages.
std::string ReadDescriptorText(int descriptor, const std::string& name, std::size_t maximumSize = kMaximumFileSize);

// A text that somebody names on a command line.
struct NamedText {
  std::string name;  // for messages: the path as it was given, or "standard input"
  std::string text;  // without the UTF-8 byte order mark that some editors put in front of it
};

// Reads a file, as ReadFileText does, or standard input for "-". Throws FileError.
NamedText ReadNamedText(const std::string& path, std::size_t maximumSize = kMaximumFileSize);

// As ReadFileText for what has to be a regular file: anything else is refused at once, a pipe too, which may keep its reader
// waiting for ever.
std::string ReadRegularFile(const std::string& path);

// The same for a name in an open folder, or from AT_FDCWD; a symbolic link of that name is refused as well.
std::string ReadRegularFileAt(int folder, const std::string& name, std::size_t maximumSize = kMaximumFileSize);

// Why `path` could not be read, or "" when it looks readable. The file is not opened: a pipe stays untouched.
std::string WhyUnreadable(const std::string& path);
// The same for what has to be a regular file.
std::string WhyNoRegularFile(const std::string& path);

// The part of `path` in front of its last slash, "." when it has none.
std::string FolderOf(const std::string& path);

// `path` as seen from `folder`: unchanged when it is absolute.
std::string PathIn(const std::string& folder, const std::string& path);

}  // namespace devhost

#endif

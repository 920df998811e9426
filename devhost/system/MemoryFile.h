#ifndef DEVHOST_SYSTEM_MEMORY_FILE_H
#define DEVHOST_SYSTEM_MEMORY_FILE_H

#include <string>
#include <string_view>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// A file that lies in memory alone, for texts with secrets that another program is to read. It is never on a disk, and it is
// gone with this process, however that ends.
class MemoryFile {
 public:
  // Throws std::system_error when the system has no memory for it.
  explicit MemoryFile(std::string_view text);

  // Where programs that this process starts open it, as long as this object lives. Nobody but this user and root can.
  std::string Path() const;
  // Stands at the start of the text: for a program that gets it as its standard input, and can read it again as
  // /proc/self/fd/0. Borrowed.
  int Descriptor() const { return m_file.Get(); }

 private:
  const FileDescriptor m_file;
};

}  // namespace devhost

#endif

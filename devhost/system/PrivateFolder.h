#ifndef DEVHOST_SYSTEM_PRIVATE_FOLDER_H
#define DEVHOST_SYSTEM_PRIVATE_FOLDER_H

#include <sys/types.h>

#include <string>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// A folder for devices that are tried out, below that for temporary files. It is gone, with all that is in it, when this
// object is gone or its process has ended: by SIGKILL, too. A second process makes it and waits for that. Made before the
// first driver is loaded, since drivers have threads.
class PrivateFolder {
 public:
  // Throws std::system_error when there cannot be such a folder or process.
  PrivateFolder();
  // Waits until the folder is gone.
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  // Absolute.
  const std::string& Path() const { return m_path; }

 private:
  // Lets the other process remove the folder, and waits for its end.
  void End();

  FileDescriptor m_end;  // of a socket: the other process sees that it is closed
  pid_t m_remover = -1;
  std::string m_path;
};

}  // namespace devhost

#endif

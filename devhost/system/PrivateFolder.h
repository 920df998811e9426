#ifndef DEVHOST_SYSTEM_PRIVATE_FOLDER_H
#define DEVHOST_SYSTEM_PRIVATE_FOLDER_H

#include <stdexcept>
#include <string>

namespace devhost {

// A folder or a file in it that could not be made: what and why, in one line.
class FolderError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A folder for temporary files, for this user alone. It is removed with this object, and so is all that it holds.
class PrivateFolder {
 public:
  // Makes the folder where TMPDIR says, or in /tmp. Throws FolderError.
  PrivateFolder();
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::string& Path() const { return m_path; }
  std::string PathOf(const std::string& name) const { return m_path + "/" + name; }

  // Writes a new file, mode 0600, and returns its path. Throws FolderError.
  std::string Write(const std::string& name, const std::string& text) const;

 private:
  std::string m_path;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_CONSOLE_TOKEN_FILE_H
#define DEVHOST_CONSOLE_TOKEN_FILE_H

#include <string>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// A file with the token in it, which only this user can read, from its first byte on. It is removed with this object, and no
// other file that has its name by then.
class TokenFile {
 public:
  // Makes it. Throws std::runtime_error, also where there is a file or link of that name already: it may be somebody's work.
  TokenFile(std::string path, const std::string& text);
  ~TokenFile();
  TokenFile(const TokenFile&) = delete;
  TokenFile& operator=(const TokenFile&) = delete;

 private:
  void Remove() const;

  const std::string m_path;
  const FileDescriptor m_file;
};

}  // namespace devhost

#endif

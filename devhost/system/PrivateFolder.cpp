#include "devhost/system/PrivateFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "devhost/system/FileDescriptor.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace fs = std::filesystem;

PrivateFolder::PrivateFolder() {
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  m_path = ((error ? fs::path("/tmp") : parent) / "devhost-XXXXXX").string();
  if (::mkdtemp(m_path.data()) == nullptr) {
    throw FolderError("cannot make the temporary folder " + Quoted(m_path) + ": " + std::generic_category().message(errno) +
                      "; the environment variable TMPDIR may name another place");
  }
}

PrivateFolder::~PrivateFolder() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

std::string PrivateFolder::Write(const std::string& name, const std::string& text) const {
  const std::string path = PathOf(name);
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  int error = file.IsOpen() ? 0 : errno;
  if (error == 0) {
    Output output(file.Get());
    output.Write(text);
    error = output.Error();
  }
  if (error != 0) {
    throw FolderError("cannot write the temporary file " + Quoted(path) + ": " + std::generic_category().message(error));
  }
  return path;
}

}  // namespace devhost

#ifndef DRIVERS_LOCALSNMPD_INCLUDED_FILES_H
#define DRIVERS_LOCALSNMPD_INCLUDED_FILES_H

#include <cstddef>
#include <string>
#include <vector>

namespace drivers {

// Reads files that a configuration includes, and keeps to the bounds of one configuration.
class IncludedFiles {
 public:
  struct File {
    std::string path;
    std::string text;
  };

  // Appends the regular file with this absolute path to `files`; never follows a link at the end of the path, and never
  // waits for a pipe. Returns what is wrong, in words, or nothing.
  std::string Read(const std::string& path, std::vector<File>& files);
  // The same for each *.conf of a folder, in the order of their names. Files that cannot be read are left out.
  std::string ReadFolder(const std::string& path, std::vector<File>& files);

 private:
  std::string ReadAt(int folder, const std::string& name, const std::string& path, std::vector<File>& files);

  std::size_t m_count = 0;
  std::size_t m_bytes = 0;
};

}  // namespace drivers

#endif

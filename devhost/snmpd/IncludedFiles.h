#ifndef DEVHOST_SNMPD_INCLUDED_FILES_H
#define DEVHOST_SNMPD_INCLUDED_FILES_H

#include <cstddef>
#include <string>
#include <vector>

namespace devhost {

// Reads files that a configuration includes, and keeps to the bounds of one configuration.
class IncludedFiles {
 public:
  struct File {
    std::string path;
    std::string text;
    unsigned mode = 0;  // who may read and change it
  };
  // Whether a link at the end of a path is followed, as the daemon does, or refused.
  enum class Links { Refused, Followed };

  explicit IncludedFiles(Links links = Links::Refused) : m_links(links) {}

  // Appends the regular file with this absolute path to `files`; never waits for a pipe. Returns what is wrong, in words, or
  // nothing.
  std::string Read(const std::string& path, std::vector<File>& files);
  // The same for each *.conf of a folder, in the order of their names. Files that cannot be read are left out.
  std::string ReadFolder(const std::string& path, std::vector<File>& files);

 private:
  std::string ReadAt(int folder, const std::string& name, const std::string& path, std::vector<File>& files);

  int Flags() const;

  Links m_links;
  std::size_t m_count = 0;
  std::size_t m_bytes = 0;
};

}  // namespace devhost

#endif

#ifndef TESTS_DRIVERS_SUPPORT_TEMPORARY_FOLDER_H
#define TESTS_DRIVERS_SUPPORT_TEMPORARY_FOLDER_H

#include <filesystem>
#include <set>
#include <string>

// A folder of its own for one test, removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string Path(const std::string& name = std::string()) const;
  void Write(const std::string& name, const std::string& text) const;
  std::string Read(const std::string& name) const;
  // The names of all entries, hidden ones included.
  std::set<std::string> Names() const;

 private:
  std::filesystem::path m_path;
};

#endif

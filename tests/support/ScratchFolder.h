#ifndef TESTS_SUPPORT_SCRATCH_FOLDER_H
#define TESTS_SUPPORT_SCRATCH_FOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace testsupport {

// A folder for one test in the system's folder for temporary files. At the end it is removed with everything in it.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "snmp-agent-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("no temporary folder could be made like " + name);
    }
    m_path = name;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& Path() const { return m_path; }
  std::string Path(const std::string& name) const { return m_path + "/" + name; }

  // Writes a file, with the folders that it needs, and returns its path.
  std::string Write(const std::string& name, const std::string& text) const {
    const std::filesystem::path path = Path(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
      throw std::runtime_error("cannot write " + path.string());
    }
    return path.string();
  }

  std::string Read(const std::string& name) const { return ReadFile(Path(name)); }

  // Returns the content of any file.
  static std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
      throw std::runtime_error("cannot read " + path);
    }
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }

 private:
  std::string m_path;
};

}  // namespace testsupport

#endif

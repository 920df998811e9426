#include "tests/drivers/support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

TemporaryFolder::TemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "drivers_test.XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make a temporary folder like " + pattern);
  }
  m_path = pattern;
  // Also another user, whom a test child may become, has to come in.
  std::filesystem::permissions(m_path, std::filesystem::perms(0755));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::permissions(m_path, std::filesystem::perms(0755), ignored);
  std::filesystem::remove_all(m_path, ignored);
}

std::string TemporaryFolder::Path(const std::string& name) const {
  return name.empty() ? m_path.string() : (m_path / name).string();
}

void TemporaryFolder::Write(const std::string& name, const std::string& text) const {
  std::ofstream stream(Path(name), std::ios::binary | std::ios::trunc);
  stream << text << std::flush;
  if (!stream) {
    throw std::runtime_error("cannot write " + Path(name));
  }
}

std::string TemporaryFolder::Read(const std::string& name) const {
  std::ifstream stream(Path(name), std::ios::binary);
  if (!stream) {
    throw std::runtime_error("cannot read " + Path(name));
  }
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::set<std::string> TemporaryFolder::Names() const {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(m_path)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

#ifndef TESTS_DEVHOST_SUPPORT_TEMPORARY_FILES_H
#define TESTS_DEVHOST_SUPPORT_TEMPORARY_FILES_H

#include <stdlib.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/support/ScratchFolder.h"

namespace devhost {

// Where temporary files are for as long as one of these lives.
class TemporaryFiles {
 public:
  TemporaryFiles() : m_usual(std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "/tmp") {
    ::setenv("TMPDIR", m_folder.Path().c_str(), 1);
  }
  ~TemporaryFiles() { ::setenv("TMPDIR", m_usual.c_str(), 1); }
  TemporaryFiles(const TemporaryFiles&) = delete;
  TemporaryFiles& operator=(const TemporaryFiles&) = delete;

  // Waits for that.
  bool Become(bool empty) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::filesystem::is_empty(m_folder.Path()) != empty && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return std::filesystem::is_empty(m_folder.Path()) == empty;
  }

 private:
  const testsupport::ScratchFolder m_folder;
  const std::string m_usual;
};

}  // namespace devhost

#endif

#include "devhost/conform/Trial.h"

#include <fcntl.h>
#include <unistd.h>

#include <string_view>

namespace devhost {

namespace {

constexpr std::string_view kCharacters = "abcdefghijkmnpqrstuvwxyz23456789";

}  // namespace

Trail::Trail(const std::string& path) : m_file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)) {}

void Trail::Note(const std::string& slot) {
  m_last = slot;
  // At most the shorter name in front of a longer one is seen when the process ends in between.
  const std::string line = slot + "\n";
  static_cast<void>(::pwrite(m_file.Get(), line.data(), line.size(), 0) == 0);
}

std::string Trial::RandomText(std::size_t length) {
  std::string text;
  while (text.size() != length) {
    text += kCharacters[random() % kCharacters.size()];
  }
  return text;
}

}  // namespace devhost

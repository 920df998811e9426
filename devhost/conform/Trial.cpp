#include "devhost/conform/Trial.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string_view>

namespace devhost {

namespace {

constexpr std::string_view kCharacters = "abcdefghijkmnpqrstuvwxyz23456789";

// The clock of the machine, the same for all processes.
std::chrono::milliseconds Now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace

Trail::LastCall Trail::Read(const std::string& path) {
  LastCall call;
  long long since = 0;
  std::ifstream file(path);
  std::getline(file, call.slot);
  if (file >> since) {
    call.age = std::max(Now() - std::chrono::milliseconds(since), std::chrono::milliseconds::zero());
  }
  return call;
}

Trail::Trail(const std::string& path) : m_file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)) {
  Note("");
}

void Trail::Note(const std::string& slot) {
  m_last = slot;
  // Over what is longer, the line feed behind the time ends the two lines that count.
  const std::string lines = slot + "\n" + std::to_string(Now().count()) + "\n";
  static_cast<void>(::pwrite(m_file.Get(), lines.data(), lines.size(), 0) == 0);
}

std::string Trial::RandomText(std::size_t length) {
  std::string text;
  while (text.size() != length) {
    text += kCharacters[random() % kCharacters.size()];
  }
  return text;
}

}  // namespace devhost

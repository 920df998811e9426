#include "devhost/engine/EndLine.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <initializer_list>

namespace devhost {
namespace {

struct KeptOutput {
  const int number;
  int own;  // a descriptor of the host's for the same file
  struct stat file;
};
// Of the process, because handlers take no argument of ours.
KeptOutput s_outputs[] = {{STDERR_FILENO, -1, {}}, {STDOUT_FILENO, -1, {}}};

bool IsStill(const KeptOutput& output, int descriptor) {
  struct stat file = {};
  return ::fstat(descriptor, &file) == 0 && file.st_dev == output.file.st_dev && file.st_ino == output.file.st_ino;
}

}  // namespace

EndLine& EndLine::Add(const char* text) noexcept {
  const std::size_t length = std::strlen(text);
  const std::size_t room = sizeof m_text - m_size - 1;
  const std::size_t count = length < room ? length : room;
  std::memcpy(m_text + m_size, text, count);
  m_size += count;
  return *this;
}

bool EndLine::Write() noexcept {
  m_text[m_size++] = '\n';
  for (const KeptOutput& output : s_outputs) {
    for (const int descriptor : {output.own, output.number}) {
      if (IsStill(output, descriptor) && ::write(descriptor, m_text, m_size) >= 0) {
        return true;
      }
    }
  }
  return false;
}

void EndLine::KeepOutputs() noexcept {
  for (KeptOutput& output : s_outputs) {
    output.own = ::fcntl(output.number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (::fstat(output.number, &output.file) != 0) {
      output.file = {};
    }
  }
}

void EndLine::ReleaseOutputs() noexcept {
  for (KeptOutput& output : s_outputs) {
    if (output.own >= 0) {
      ::close(output.own);
    }
    output.own = -1;
  }
}

}  // namespace devhost

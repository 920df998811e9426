#include "devhost/engine/EndNote.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>

#include "devhost/engine/EndWatch.h"

namespace devhost {
namespace {

constexpr std::size_t kMostNotes = 64;
constexpr std::size_t kLongest = 256;

// Of the process, because what is called at its end takes no argument.
char s_notes[kMostNotes][kLongest];
std::atomic<std::size_t> s_count{0};
std::atomic<pthread_t> s_thread{};

// Appends as much as there is room for, and ends the text.
char* Append(char* at, const char* end, std::string_view text) {
  for (const char character : text) {
    if (at == end) {
      break;
    }
    *at++ = static_cast<unsigned char>(character) < ' ' ? '?' : character;
  }
  *at = '\0';
  return at;
}

}  // namespace

EndNote::EndNote(std::string_view operation, std::string_view title) noexcept : m_process(::getpid()) {
  const std::size_t count = s_count;
  if (count < kMostNotes) {
    char* const note = s_notes[count];
    const char* const end = note + kLongest - 1;
    // The driver matters more than the whole name of a command.
    char* const at = Append(note, end, operation.substr(0, kLongest / 2));
    Append(Append(at, end, " of "), end, title);
  }
  s_thread = pthread_self();
  s_count = count + 1;
}

EndNote::~EndNote() {
  if (m_process != ::getpid()) {
    EndWatch::OnReturnOfCopy();
  }
  --s_count;
}

const char* EndNote::UnderWay() noexcept {
  const std::size_t count = std::min(s_count.load(), kMostNotes);
  return count == 0 ? "" : s_notes[count - 1];
}

bool EndNote::IsOnThisThread() noexcept {
  return s_count != 0 && pthread_equal(s_thread, pthread_self()) != 0;
}

}  // namespace devhost

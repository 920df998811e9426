#include "devhost/engine/EndNote.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>

#include "devhost/engine/EndRecord.h"
#include "devhost/engine/EndWatch.h"

namespace devhost {
namespace {

// Of the process, because what is called at its end takes no argument.
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
  EndRecord& record = EndRecord::OfProcess();
  const std::size_t count = record.count;
  if (count < EndRecord::kMostNotes) {
    char* const note = record.notes[count];
    const char* const end = note + EndRecord::kLongestNote - 1;
    // The driver matters more than the whole name of a command.
    char* const at = Append(note, end, operation.substr(0, EndRecord::kLongestNote / 2));
    Append(Append(at, end, " of "), end, title);
  }
  s_thread = pthread_self();
  record.count = count + 1;
}

EndNote::~EndNote() {
  if (m_process != ::getpid()) {
    EndWatch::OnReturnOfCopy();
  }
  --EndRecord::OfProcess().count;
}

const char* EndNote::UnderWay() noexcept {
  return EndRecord::OfProcess().UnderWay();
}

bool EndNote::IsOnThisThread() noexcept {
  return EndRecord::OfProcess().count != 0 && pthread_equal(s_thread, pthread_self()) != 0;
}

}  // namespace devhost

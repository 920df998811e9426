#include "devhost/engine/EndRecord.h"

#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace devhost {
namespace {

// Of the process, because what is called at its end takes no argument.
EndRecord s_own;
std::atomic<EndRecord*> s_record{&s_own};

void CopyShared() noexcept {
  const EndRecord* const shared = s_record.exchange(&s_own);
  if (shared != &s_own) {
    std::memcpy(s_own.notes, shared->notes, sizeof s_own.notes);
    s_own.count = shared->count.load();
    s_own.endStatus = shared->endStatus.load();
    s_own.isSaid = shared->isSaid.load();
  }
}

}  // namespace

const char* EndRecord::UnderWay() const noexcept {
  const std::size_t noted = std::min(count.load(), kMostNotes);
  return noted == 0 ? "" : notes[noted - 1];
}

EndRecord& EndRecord::OfProcess() noexcept {
  return *s_record;
}

void EndRecord::Share() noexcept {
  void* const memory = ::mmap(nullptr, sizeof(EndRecord), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory != MAP_FAILED) {
    s_record = new (memory) EndRecord;
  }
}

void EndRecord::KeepFromChildren() noexcept {
  ::pthread_atfork(nullptr, nullptr, &CopyShared);
}

}  // namespace devhost

#include "devhost/engine/EndNote.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace devhost {
namespace {

// Of the process, because what is called at its end takes no argument.
std::atomic<const EndNote*> s_innermost{nullptr};
std::atomic<int> s_exitStatus{1};

}  // namespace

EndNote::EndNote(std::string call)
    : m_call(std::move(call)), m_outer(s_innermost.exchange(this)), m_handler(std::set_terminate(&OnTerminate)) {
  static const int kRegistered = std::atexit(&OnExit);
  static_cast<void>(kRegistered);
}

EndNote::~EndNote() {
  std::set_terminate(m_handler);
  s_innermost = m_outer;
}

void EndNote::SetExitStatus(int status) {
  s_exitStatus = status;
}

void EndNote::OnExit() {
  const EndNote* const note = s_innermost;
  if (note != nullptr) {
    std::fprintf(stderr, "devhost: the process was ended during %s; drivers return from every call\n", note->m_call.c_str());
    ::_exit(s_exitStatus);
  }
}

void EndNote::OnTerminate() {
  const EndNote* note = s_innermost;
  if (note != nullptr) {
    std::fprintf(
        stderr,
        "devhost: the process was terminated during %s; an exception must not leave a destructor or thread of a driver\n",
        note->m_call.c_str());
  }
  for (; note != nullptr; note = note->m_outer) {
    if (note->m_handler != &OnTerminate && note->m_handler != nullptr) {
      note->m_handler();
    }
  }
  std::abort();
}

}  // namespace devhost

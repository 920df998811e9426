#include "devhost/engine/EndWatch.h"

#include <pthread.h>
#include <signal.h>
#include <ucontext.h>
#include <unistd.h>
#include <unwind.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "devhost/engine/DriverCode.h"
#include "devhost/engine/EndLine.h"
#include "devhost/engine/EndNote.h"
#include "devhost/engine/EndRecord.h"

namespace devhost {
namespace {

struct Crash {
  int signal;
  const char* what;
};
constexpr Crash kCrashes[] = {{SIGSEGV, "crashed (SIGSEGV: an access to memory that is not there)"},
                              {SIGBUS, "crashed (SIGBUS: an access to memory that is not there)"},
                              {SIGFPE, "crashed (SIGFPE: an impossible calculation)"},
                              {SIGILL, "crashed (SIGILL: an impossible instruction)"},
                              {SIGABRT, "was aborted (SIGABRT)"}};
constexpr std::size_t kCrashCount = sizeof kCrashes / sizeof kCrashes[0];

// Of the process, because handlers take no argument of ours.
std::atomic<pid_t> s_process{0};  // that is watched; 0 for none
std::atomic<const void*> s_aborter{nullptr};
std::terminate_handler s_terminate = nullptr;  // of before
struct sigaction s_before[kCrashCount];
struct sigaction s_onCrash;

alignas(16) char s_stack[65536];
std::atomic<bool> s_hasStack{false};
pthread_t s_stackOwner;

bool EndsWith(const char* text, const char* end) {
  const std::size_t length = std::strlen(text);
  const std::size_t endLength = std::strlen(end);
  return length >= endLength && std::strcmp(text + length - endLength, end) == 0;
}

bool IsWatched() {
  return s_process != 0 && s_process == ::getpid();
}

// What happened, in whose code, during which call, and what to do about it. A call names its driver, too. Safe in a signal
// handler. Only the first word counts: what follows is its consequence.
void Say(const char* what, const char* by, const void* code, const char* advice) {
  std::atomic<bool>& isSaid = EndRecord::OfProcess().isSaid;
  if (isSaid.exchange(true)) {
    return;
  }
  char culprit[256];
  DriverCode::Name(code, culprit, sizeof culprit);
  const char* const call = EndNote::UnderWay();
  const bool isOnThisThread = EndNote::IsOnThisThread();
  EndLine line;
  line.Add("devhost: the process ").Add(what);
  if (culprit[0] != '\0' && !(isOnThisThread && EndsWith(call, culprit))) {
    line.Add(by).Add(culprit);
  }
  if (isOnThisThread) {
    line.Add(" during ").Add(call);
  } else if (call[0] != '\0') {
    line.Add(", on a second thread, during ").Add(call);
  } else {
    line.Add(", outside of any call");
  }
  // Where a driver has closed everything, the process that watches says what it knows.
  isSaid = line.Add(advice).Write();
}

// NOLINTBEGIN(performance-no-int-to-ptr): registers and frames hold addresses as integers

// Where the crash happened; null on an architecture that is not known here.
const void* CodeOf(const void* context) {
  const mcontext_t& machine = static_cast<const ucontext_t*>(context)->uc_mcontext;
#if defined(__x86_64__)
  return reinterpret_cast<const void*>(machine.gregs[REG_RIP]);
#elif defined(__i386__)
  return reinterpret_cast<const void*>(machine.gregs[REG_EIP]);
#elif defined(__arm__)
  return reinterpret_cast<const void*>(machine.arm_pc);
#elif defined(__aarch64__)
  return reinterpret_cast<const void*>(machine.pc);
#else
  static_cast<void>(machine);
  return nullptr;
#endif
}

// Which crash it is; kCrashCount for none.
std::size_t IndexOf(int signal) {
  std::size_t i = 0;
  while (i != kCrashCount && kCrashes[i].signal != signal) {
    ++i;
  }
  return i;
}

bool IsLeftToTheSystem(const struct sigaction& action) {
  return (action.sa_flags & SA_SIGINFO) == 0 && (action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN);
}

void OnCrash(int signal, siginfo_t* info, void* context) {
  const std::size_t i = IndexOf(signal);
  if (IsWatched()) {
    const void* const aborter = signal == SIGABRT ? s_aborter.load() : nullptr;
    Say(kCrashes[i].what, " in the code of ", aborter != nullptr ? aborter : CodeOf(context), "");
  }
  // The instruction that crashed is executed again, so that whoever looks at the core finds the place. What was sent by a
  // call does not come again on its own. Nobody can ignore a crash, though a parent process may have asked for it.
  struct sigaction byDefault = {};
  byDefault.sa_handler = SIG_DFL;
  ::sigaction(signal, IsLeftToTheSystem(s_before[i]) ? &byDefault : &s_before[i], nullptr);
  if (info->si_code <= 0) {
    ::raise(signal);
  }
}

_Unwind_Reason_Code StopInDriver(_Unwind_Context* frame, void* found) {
  const void* const code = reinterpret_cast<const void*>(_Unwind_GetIP(frame));
  char name[2];
  DriverCode::Name(code, name, sizeof name);
  if (name[0] == '\0') {
    return _URC_NO_REASON;
  }
  *static_cast<const void**>(found) = code;
  return _URC_END_OF_STACK;
}

// NOLINTEND(performance-no-int-to-ptr)

// The stack is still that of the code that threw, or of the function that must not throw.
[[noreturn]] void OnTerminate() {
  if (IsWatched()) {
    const void* code = nullptr;
    _Unwind_Backtrace(&StopInDriver, &code);
    Say("was terminated", " by ", code, "; an exception must not leave a destructor or thread of a driver");
    if (s_terminate == &__gnu_cxx::__verbose_terminate_handler) {
      std::abort();  // it would show the exception's text, which may quote a secret
    }
  }
  if (s_terminate != nullptr) {
    s_terminate();
  }
  std::abort();
}

// Room for the handler of a crash that is the end of the stack. A thread that has such room already keeps it.
void GiveStack() {
  stack_t before;
  if (::sigaltstack(nullptr, &before) != 0 || (before.ss_flags & SS_DISABLE) == 0) {
    return;
  }
  stack_t stack = {};
  stack.ss_sp = s_stack;
  stack.ss_size = sizeof s_stack;
  s_hasStack = ::sigaltstack(&stack, nullptr) == 0;
  s_stackOwner = ::pthread_self();
}

void TakeStack() {
  if (s_hasStack.exchange(false) && ::pthread_equal(s_stackOwner, ::pthread_self()) != 0) {
    stack_t none = {};
    none.ss_flags = SS_DISABLE;
    ::sigaltstack(&none, nullptr);
  }
}

}  // namespace

EndWatch::EndWatch() : m_terminate(std::set_terminate(&OnTerminate)) {
  s_terminate = m_terminate;
  EndRecord::OfProcess().isSaid = false;
  s_aborter = nullptr;
  s_process = ::getpid();
  EndLine::KeepOutputs();
  GiveStack();
  s_onCrash.sa_sigaction = &OnCrash;
  s_onCrash.sa_flags = SA_SIGINFO | SA_ONSTACK;
  // A crash whose signal is blocked ends the process without a handler.
  sigset_t crashes;
  ::sigemptyset(&crashes);
  for (std::size_t i = 0; i != kCrashCount; ++i) {
    ::sigaction(kCrashes[i].signal, &s_onCrash, &s_before[i]);
    ::sigaddset(&crashes, kCrashes[i].signal);
  }
  ::pthread_sigmask(SIG_UNBLOCK, &crashes, nullptr);
}

EndWatch::~EndWatch() {
  for (std::size_t i = 0; i != kCrashCount; ++i) {
    ::sigaction(kCrashes[i].signal, &s_before[i], nullptr);
  }
  TakeStack();
  EndLine::ReleaseOutputs();
  s_process = 0;
  std::set_terminate(m_terminate);
}

void EndWatch::SetExitStatus(int status) {
  EndRecord::OfProcess().endStatus = status;
}

int EndWatch::OnEnd(const void* caller, int status) noexcept {
  char name[2];
  DriverCode::Name(caller, name, sizeof name);
  const bool isDriver = name[0] != '\0' || EndNote::UnderWay()[0] != '\0' || DriverCode::IsLoaded();
  if (!IsWatched() || !isDriver) {
    return status;
  }
  Say("was ended", " by ", caller, "; drivers return from every call");
  return status != 0 ? status : EndRecord::OfProcess().endStatus.load();
}

void EndWatch::OnEndOfThread() noexcept {
  Say("lost its thread", "", nullptr, ", by pthread_exit or the like; drivers return from every call");
  ::_exit(EndRecord::OfProcess().endStatus);
}

void EndWatch::OnAbort(const void* caller) noexcept {
  if (IsWatched()) {
    s_aborter = caller;
  }
}

const struct sigaction* EndWatch::ActionOf(const void* caller, int signal, const struct sigaction* action) noexcept {
  char name[2];
  DriverCode::Name(caller, name, sizeof name);
  const bool isCrash = action != nullptr && IndexOf(signal) != kCrashCount && IsLeftToTheSystem(*action);
  return isCrash && name[0] != '\0' && IsWatched() ? &s_onCrash : action;
}

void EndWatch::OnReturnOfCopy() noexcept {
  if (s_process != 0 && !IsWatched()) {
    Say("was copied by fork", "", nullptr, ", and the copy was ended; a child process does not return into the host");
    ::_exit(EndRecord::OfProcess().endStatus);
  }
}

}  // namespace devhost

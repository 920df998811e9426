// The functions of the C library that end a process, in front of those of the C library: modules find these first. So a
// driver that ends the process is named by its code, whatever function it calls and on whatever thread; the process that
// watches only knows the call that was under way. Everybody else ends the process as ever. The same for functions that would
// let a driver's crash end it without a word.
#include <dlfcn.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "devhost/engine/EndWatch.h"

namespace {

// The function of that name that this library stands in front of.
template <class Function>
Function Next(const char* name) {
  void* const symbol = dlsym(RTLD_NEXT, name);
  Function function = nullptr;
  static_assert(sizeof function == sizeof symbol, "object and function pointers have one size here");
  std::memcpy(&function, &symbol, sizeof function);
  return function;
}

[[noreturn]] void EndNow(const void* caller, int status) {
  const int ending = devhost::EndWatch::OnEnd(caller, status);
  for (;;) {
    ::syscall(SYS_exit_group, ending);
  }
}

using EndFunction = void (*)(int);
using AbortFunction = void (*)();
using ActionFunction = int (*)(int, const struct sigaction*, struct sigaction*);

int SetAction(const void* caller, int number, const struct sigaction* action, struct sigaction* former) {
  // Looked up before the first crash, because a handler may call this.
  static const ActionFunction kNext = Next<ActionFunction>("sigaction");
  return kNext(number, devhost::EndWatch::ActionOf(caller, number, action), former);
}

}  // namespace

extern "C" {

void exit(int status) noexcept {
  // Functions that are called at the exit still run.
  Next<EndFunction>("exit")(devhost::EndWatch::OnEnd(__builtin_return_address(0), status));
  __builtin_unreachable();
}

void quick_exit(int status) noexcept {
  Next<EndFunction>("quick_exit")(devhost::EndWatch::OnEnd(__builtin_return_address(0), status));
  __builtin_unreachable();
}

void _exit(int status) {
  EndNow(__builtin_return_address(0), status);
}

void _Exit(int status) noexcept {
  EndNow(__builtin_return_address(0), status);
}

int sigaction(int number, const struct sigaction* action, struct sigaction* former) noexcept {
  return SetAction(__builtin_return_address(0), number, action, former);
}

sighandler_t signal(int number, sighandler_t handler) noexcept {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  ::sigaddset(&action.sa_mask, number);
  struct sigaction former = {};
  const bool isSet = handler != SIG_ERR && SetAction(__builtin_return_address(0), number, &action, &former) == 0;
  return isSet ? former.sa_handler : SIG_ERR;
}

void abort() noexcept {
  devhost::EndWatch::OnAbort(__builtin_return_address(0));
  Next<AbortFunction>("abort")();
  __builtin_unreachable();
}
}

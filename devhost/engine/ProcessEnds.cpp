// The functions of the C library that end a process, in front of those of the C library: modules find these first. So a
// driver that ends the process is noticed and named, whatever function it calls and on whatever thread. Everybody else ends
// the process as ever.
//
// A parent process that watches would notice no more of drivers than this, but system calls of their own, and would stand
// between the program and its terminal, its signals and its debugger.
#include <dlfcn.h>
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

void abort() noexcept {
  devhost::EndWatch::OnAbort(__builtin_return_address(0));
  Next<AbortFunction>("abort")();
  __builtin_unreachable();
}
}

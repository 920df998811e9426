#ifndef DEVHOST_SYSTEM_KEEPER_H
#define DEVHOST_SYSTEM_KEEPER_H

#include <sys/types.h>

#include <vector>

namespace devhost {

// What a keeper needs, made before the fork: a fork of a process with threads may call async-signal-safe functions only.
struct KeeperTask {
  const char* program;
  std::vector<char*> arguments;  // with a null pointer at the end, as the next
  std::vector<char*> environment;
  int folder;  // -1 for the current one
  int input;   // -1 for nothing to read
  int output;
  bool privateFiles;
  int control;    // the keeper's end of a socket of type SOCK_SEQPACKET
  int makersEnd;  // readable when the maker has ended; -1 on a system that has no such thing
};

// The first message of a keeper. The second is the wait status of the program, an int. Its maker sends signals, an int each,
// and closes its end to say that the program has to end.
struct KeeperStart {
  int error;  // why the program was not started, or 0
  pid_t pid;  // the program
};

// The life of both keepers, in a fork with all signals blocked. See KeptProcess.h.
[[noreturn]] void Keep(const KeeperTask& task) noexcept;

}  // namespace devhost

#endif

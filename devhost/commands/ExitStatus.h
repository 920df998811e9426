#ifndef DEVHOST_COMMANDS_EXIT_STATUS_H
#define DEVHOST_COMMANDS_EXIT_STATUS_H

namespace devhost {

// The exit statuses of the program, in the order of their weight. The help of each command says what they mean there.
enum class ExitStatus : int { Good = 0, Failed = 1, Wrong = 2 };

}  // namespace devhost

#endif

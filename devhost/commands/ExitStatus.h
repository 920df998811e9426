#ifndef DEVHOST_COMMANDS_EXIT_STATUS_H
#define DEVHOST_COMMANDS_EXIT_STATUS_H

namespace devhost {

// The exit statuses of the program. The help of each command tells what they mean there.
enum ExitStatus : int { ExitStatus_Good = 0, ExitStatus_Failed = 1, ExitStatus_Wrong = 2 };

}  // namespace devhost

#endif

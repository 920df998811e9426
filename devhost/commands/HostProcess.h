#ifndef DEVHOST_COMMANDS_HOST_PROCESS_H
#define DEVHOST_COMMANDS_HOST_PROCESS_H

#include "devhost/commands/Command.h"

namespace devhost {

// The command line by which "devhost serve" starts the process with the drivers. It is not for people: no help names it.
inline constexpr char kHostProcess[] = "__host";
Command MakeHostProcess();

}  // namespace devhost

#endif

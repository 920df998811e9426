#ifndef HOST_LOG_X_MESSAGE_H
#define HOST_LOG_X_MESSAGE_H

#include "host/HostApi.h"

// Writes one line to the host's log. `format` and what follows are as for printf; the host ends the line. Use level 3 for
// what an operator should know. Never throws; a line that the host cannot format is dropped.
H7_HOST_API void LogXMessage(unsigned int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

#endif

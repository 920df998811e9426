#ifndef HOST_ICMD_MESSAGE_H
#define HOST_ICMD_MESSAGE_H

#include <string>

#include "host/HostApi.h"

// One command from the configuration tool, with its parameters by name. Implemented by the host, read by the command
// handlers of a driver; valid only while the handler runs. The order of the operations is a binary contract.
class H7_HOST_API ICmdMessage {
 public:
  // The parameter's text; empty when the command does not have it.
  /* 1 */ virtual std::string GetString(const char* name) const = 0;
  // The parameter as an unsigned decimal number of at most 32 bits; 0 when it is missing or anything else.
  /* 2 */ virtual unsigned long GetULong(const char* name) const = 0;
  // Whether the command has the parameter, even an empty one.
  /* 3 */ virtual bool Has(const char* name) const = 0;

 protected:
  ~ICmdMessage() = default;
};

#endif

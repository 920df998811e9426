#ifndef HOST_TO_STRING_H
#define HOST_TO_STRING_H

#include <string>

#include "host/HostApi.h"

// The host's conversions to text. The typed readers of `H7XML::INode` accept what these write.
namespace h7 {

// "true" or "false".
H7_HOST_API std::string ToString(bool value);

// Unsigned decimal, without sign, blanks or leading zeros.
H7_HOST_API std::string ToString(unsigned long value);

}  // namespace h7

#endif

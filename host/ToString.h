#ifndef HOST_TO_STRING_H
#define HOST_TO_STRING_H

#include <string>

#include "host/HostApi.h"

// The host's conversions to text. The typed readers of `H7XML::INode` accept their results.
namespace h7 {

// Returns "true" or "false".
H7_HOST_API std::string ToString(bool value);

// Returns the number in decimal, without sign, blanks or leading zeros.
H7_HOST_API std::string ToString(unsigned long value);

}  // namespace h7

#endif

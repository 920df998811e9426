#ifndef DEVHOST_TEXT_TYPED_TEXT_H
#define DEVHOST_TEXT_TYPED_TEXT_H

#include <string>
#include <string_view>

namespace devhost {

// How the host reads typed values from texts, in XML nodes and command parameters alike.

// An unsigned decimal number of at most 32 bits, white space around it allowed; 0 for anything else.
unsigned long ReadULong(std::string_view text) noexcept;

// True from "true" or "1".
bool ReadBool(std::string_view text) noexcept;

}  // namespace devhost

#endif

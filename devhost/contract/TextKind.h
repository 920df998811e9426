#ifndef DEVHOST_CONTRACT_TEXT_KIND_H
#define DEVHOST_CONTRACT_TEXT_KIND_H

#include <string_view>

namespace devhost {

// The kinds of text that elements and attributes hold. contract/types.xsd has the same kinds.
enum class TextKind {
  Any,
  Filled,         // not empty
  Line,           // no line break, at most 255 characters
  FilledLine,     // such a line, not empty
  Switch,         // a switch in a request
  WrittenSwitch,  // a switch as the agent writes it
  Id,             // unsigned, 32 bits
  SignedId,       // the same bits as a signed number, as notifications have them
  Port,           // a port, or nothing for the usual one
  DriverName      // of a driver in a project file
};

// Whether `text` is of that kind. A number has one spelling: no sign, blank or zero in front.
bool IsOfKind(TextKind kind, std::string_view text);

// What a text of that kind is, for messages: "true or false".
const char* MeaningOf(TextKind kind);

}  // namespace devhost

#endif

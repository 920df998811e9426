#ifndef DEVHOST_XML_XML_CALL_H
#define DEVHOST_XML_XML_CALL_H

#include <string>

namespace devhost {

// Tells the observer of a call from outside; first in every operation that drivers see. A null name counts as "".
void OnXmlCall(const char* operation, const char* name = "");
inline void OnXmlCall(const char* operation, const std::string& name) {
  OnXmlCall(operation, name.c_str());
}

// The code that called the function in which this stands.
#define DEVHOST_CALLER __builtin_return_address(0)

}  // namespace devhost

#endif

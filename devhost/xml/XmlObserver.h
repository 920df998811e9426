#ifndef DEVHOST_XML_XML_OBSERVER_H
#define DEVHOST_XML_XML_OBSERVER_H

#include <cstddef>

namespace devhost {

// Sees every call into the XML library: for tests that pin an order of calls or let one call fail.
class XmlObserver {
 public:
  virtual ~XmlObserver() = default;
  // Called first in every function of `H7XML` and every operation of its interfaces but AddRef and Release. `operation` is
  // the function's name ("CreateXmlNode", "SetNamedString", ...), `name` its first text argument or "". May throw: the
  // operation then has done nothing.
  virtual void OnXmlCall(const char* operation, const char* name) = 0;
};

// Calls the observer, when there is one; a null name counts as "". First in every operation that it hears of.
void TellXmlObserver(const char* operation, const char* name);

// One observer for the process; null (the initial state) for none. Returns the one that was set before.
XmlObserver* SetXmlObserver(XmlObserver* observer) noexcept;

// How many counted XML objects (nodes, lists, documents) are alive in this process.
std::size_t LiveXmlObjects() noexcept;

}  // namespace devhost

#endif

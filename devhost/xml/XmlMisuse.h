#ifndef DEVHOST_XML_XML_MISUSE_H
#define DEVHOST_XML_XML_MISUSE_H

#include <cstdint>
#include <string>
#include <vector>

namespace devhost {

// Hears of code that breaks the rules of counted XML objects. The object in question is unharmed: the operation did nothing.
class XmlMisuseSink {
 public:
  virtual ~XmlMisuseSink() = default;
  // `what` says in one line what was done to which object; `code` is an address in the code that did it.
  virtual void OnXmlMisuse(const std::string& what, const void* code) = 0;
};

// One sink for the process; null (the initial state) sends a line to standard error. Returns the one that was set before.
XmlMisuseSink* SetXmlMisuseSink(XmlMisuseSink* sink) noexcept;

// An object that somebody still holds, and the code that did it: `creator` got the first handle, `lastHolder` added the
// latest reference. Both are addresses inside that code, and hold only while its module is loaded.
struct LiveXmlObject {
  std::string description;  // for example: node "SNMPState"
  const void* creator;
  const void* lastHolder;
};

// Grows with every object that is handed out while no handle holds it.
std::uint64_t XmlMark() noexcept;

// What was handed out after `mark` and is still held, latest first.
std::vector<LiveXmlObject> LiveXmlObjectsSince(std::uint64_t mark);

}  // namespace devhost

#endif

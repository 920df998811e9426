#ifndef DEVHOST_XML_XML_CALL_H
#define DEVHOST_XML_XML_CALL_H

#include <string>

namespace devhost {

// Lets one thread at a time work on XML objects; calls of that thread may nest. Counts and lists of objects are shared by
// all threads, and even a rude driver shall be reported, not crash the host.
class XmlLock {
 public:
  XmlLock() noexcept;
  ~XmlLock();
  XmlLock(const XmlLock&) = delete;
  XmlLock& operator=(const XmlLock&) = delete;
};

// Opens the lock of this thread, however deep, for as long as it lives: reports go out without it, because who hears of them
// may wait for a thread that waits for the lock.
class XmlUnlock {
 public:
  XmlUnlock() noexcept;
  ~XmlUnlock();
  XmlUnlock(const XmlUnlock&) = delete;
  XmlUnlock& operator=(const XmlUnlock&) = delete;

 private:
  const int m_depth;
};

// Tells the sink, and the observer, of a call from outside.
class XmlTold {
 public:
  XmlTold(const char* operation, const char* name, const void* code);
  XmlTold(const char* operation, const void* code) noexcept;
};

// A call from outside; first in every operation that drivers see. Tells of it, then locks. A null name counts as "".
class XmlCall : private XmlTold, private XmlLock {
 public:
  XmlCall(const char* operation, const char* name, const void* code) : XmlTold(operation, name, code) {}
  XmlCall(const char* operation, const std::string& name, const void* code) : XmlTold(operation, name.c_str(), code) {}
  // AddRef and Release, of which the observer does not hear.
  XmlCall(const char* operation, const void* code) noexcept : XmlTold(operation, code) {}
};

// The code that called the function in which this stands.
#define DEVHOST_CALLER __builtin_return_address(0)

}  // namespace devhost

#endif

#ifndef DEVHOST_XML_XML_COUNTED_H
#define DEVHOST_XML_XML_COUNTED_H

#include <cstdint>
#include <string>

#include "host/auto_com.h"

namespace devhost {

// The code that called the function in which this stands.
#define DEVHOST_CALLER __builtin_return_address(0)

// The count behind every XML object that drivers hold.
//
// An object has two kinds of owners: handles, which the code outside counts (`Hold`, `Drop`), and pins, with which one
// object keeps another alive. When the last of both is gone, `OnUnused` decides what happens.
//
// An object that was ever handed out is not deleted at once: its memory waits in a small quarantine, so that one release too
// many, or a use after the last release, is reported to the misuse sink instead of crashing somewhere else.
//
// All objects share one list of those that are held, so counting takes a lock: drivers with threads of their own may work on
// objects of their own. Nothing else is locked: only one thread at a time may work on a tree.
class XmlCounted {
 public:
  XmlCounted(const XmlCounted&) = delete;
  XmlCounted& operator=(const XmlCounted&) = delete;

  // Adds or gives up a handle; `code` is an address in the code that does it.
  void Hold(const void* code) const noexcept;
  void Drop(const void* code) const noexcept;
  void Pin() const noexcept;
  void Unpin() const noexcept;

  bool IsUsed() const noexcept { return m_handles != 0 || m_pins != 0; }
  // False, and reported to the misuse sink, when the object has been retired.
  bool CheckUsable(const char* operation, const void* code) const;

  // Takes the object out of use: its content is freed now, its memory later. Nothing may use it any more.
  void Retire() const noexcept;

 protected:
  XmlCounted() = default;
  virtual ~XmlCounted() = default;

  // The last handle and the last pin are gone.
  virtual void OnUnused() const noexcept { Retire(); }
  // Gives back everything that the object owns.
  virtual void Clear() const noexcept = 0;
  // What it is, for messages.
  virtual std::string Describe() const = 0;

 private:
  friend class XmlLiveList;

  void Report(const char* what, const void* code) const noexcept;

  mutable std::uint32_t m_handles = 0;
  mutable std::uint32_t m_pins = 0;
  mutable bool m_retired = false;
  mutable std::uint64_t m_mark = 0;  // 0: never handed out
  mutable const void* m_creator = nullptr;
  mutable const void* m_lastHolder = nullptr;
  mutable const XmlCounted* m_newer = nullptr;
  mutable const XmlCounted* m_older = nullptr;
};

// A counted object behind one of the interfaces of `H7XML`.
template <class Interface>
class XmlObject : public Interface, public XmlCounted {
 public:
  // Never part of another function, which would hide the caller.
  [[gnu::noinline]] void AddRef() const final { Hold(DEVHOST_CALLER); }
  [[gnu::noinline]] void Release() const final { Drop(DEVHOST_CALLER); }

  // A handle of the object for `code`.
  h7::auto_com<Interface> HandOut(const void* code) const {
    Hold(code);
    // Drivers know no handles of constant objects.
    return h7::auto_com<Interface>(const_cast<XmlObject*>(this));
  }
};

// Reports to the misuse sink, or to standard error when there is none.
void ReportXmlMisuse(const std::string& what, const void* code);

}  // namespace devhost

#endif

#ifndef DEVHOST_XML_XML_COUNTED_H
#define DEVHOST_XML_XML_COUNTED_H

#include <cstdint>
#include <string>

namespace devhost {

// The count behind every XML object that drivers hold.
//
// An object knows two kinds of owner: handles, which are what the code outside counts (`Hold`, `Drop`), and pins, with which
// one object keeps another alive. When the last of both is gone, `OnUnused` decides what happens.
//
// An object that was ever handed out is not deleted at once: its memory waits in a small quarantine, so that one release too
// many, or a use after the last release, is told to the misuse sink instead of being a crash somewhere else.
//
// All objects share one list of what is held, so counting is locked: two drivers with threads of their own may work on
// objects of their own. Everything else is not: one thread at a time works on a tree.
class XmlCounted {
 public:
  XmlCounted(const XmlCounted&) = delete;
  XmlCounted& operator=(const XmlCounted&) = delete;

  void Hold(const void* code) const noexcept;
  void Drop(const void* code) const noexcept;
  void Pin() const noexcept;
  void Unpin() const noexcept;

  bool IsUsed() const noexcept { return m_handles != 0 || m_pins != 0; }
  // False, and told to the misuse sink, when the object has been retired.
  bool CheckUsable(const char* operation, const void* code) const;

  // Takes the object out of use: its content goes now, its memory later. Nothing may use it any more.
  void Retire() const noexcept;

 protected:
  XmlCounted() = default;
  virtual ~XmlCounted() = default;

  // The last handle and the last pin are gone.
  virtual void OnUnused() const noexcept = 0;
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

// The code that called the function in which this stands.
#define DEVHOST_CALLER __builtin_return_address(0)

// Tells the misuse sink.
void ReportXmlMisuse(const std::string& what, const void* code);

}  // namespace devhost

#endif

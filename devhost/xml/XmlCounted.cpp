#include "devhost/xml/XmlCounted.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <mutex>

#include "devhost/xml/XmlCall.h"
#include "devhost/xml/XmlMisuse.h"
#include "devhost/xml/XmlObserver.h"

namespace devhost {

// The objects that are held, latest first: a list through the objects themselves, so that handing one out allocates nothing.
class XmlLiveList {
 public:
  void Add(const XmlCounted& object) noexcept {
    object.m_older = m_newest;
    object.m_newer = nullptr;
    if (m_newest != nullptr) {
      m_newest->m_newer = &object;
    }
    m_newest = &object;
    ++m_size;
  }

  void Remove(const XmlCounted& object) noexcept {
    (object.m_newer != nullptr ? object.m_newer->m_older : m_newest) = object.m_older;
    if (object.m_older != nullptr) {
      object.m_older->m_newer = object.m_newer;
    }
    object.m_older = nullptr;
    object.m_newer = nullptr;
    --m_size;
  }

  std::size_t Size() const noexcept { return m_size; }
  std::uint64_t NextMark() noexcept { return ++m_mark; }
  std::uint64_t Mark() const noexcept { return m_mark; }

  std::vector<LiveXmlObject> Since(std::uint64_t mark) const {
    std::vector<LiveXmlObject> result;
    for (const XmlCounted* object = m_newest; object != nullptr; object = object->m_older) {
      if (object->m_mark > mark) {
        result.push_back({object->Describe(), object->m_creator, object->m_lastHolder});
      }
    }
    return result;
  }

  // The oldest retired object makes room for `object`.
  void Quarantine(const XmlCounted& object) noexcept {
    delete m_quarantine[m_oldestRetired];
    m_quarantine[m_oldestRetired] = &object;
    m_oldestRetired = (m_oldestRetired + 1) % m_quarantine.size();
  }

  static void Delete(const XmlCounted& object) noexcept { delete &object; }

 private:
  const XmlCounted* m_newest = nullptr;
  std::size_t m_size = 0;
  std::uint64_t m_mark = 0;
  std::array<const XmlCounted*, 1024> m_quarantine{};
  std::size_t m_oldestRetired = 0;
};

namespace {

// Without a destructor: handles may still be dropped while the process ends.
XmlLiveList s_live;
std::atomic<XmlMisuseSink*> s_sink{nullptr};
std::recursive_mutex s_mutex;
thread_local int t_depth = 0;

// What code inside the library does for an operation is no call of its own.
void TellXmlSink(const char* operation, const void* code) noexcept {
  XmlMisuseSink* const sink = s_sink;
  if (sink != nullptr && t_depth == 0) {
    sink->OnXmlThread(operation, code);
  }
}

}  // namespace

void TellXmlObserver(const char* operation, const char* name);

XmlLock::XmlLock() noexcept {
  s_mutex.lock();
  ++t_depth;
}

XmlLock::~XmlLock() {
  --t_depth;
  s_mutex.unlock();
}

XmlUnlock::XmlUnlock() noexcept : m_depth(t_depth) {
  for (; t_depth != 0; --t_depth) {
    s_mutex.unlock();
  }
}

XmlUnlock::~XmlUnlock() {
  for (; t_depth != m_depth; ++t_depth) {
    s_mutex.lock();
  }
}

XmlTold::XmlTold(const char* operation, const char* name, const void* code) {
  TellXmlSink(operation, code);
  TellXmlObserver(operation, name);
}

XmlTold::XmlTold(const char* operation, const void* code) noexcept {
  TellXmlSink(operation, code);
}

void XmlCounted::Hold(const void* code) const noexcept {
  const XmlLock lock;
  if (m_retired) {
    Report("was given a reference after its last one was released", code);
    return;
  }
  if (m_handles == 0) {
    s_live.Add(*this);
    m_mark = s_live.NextMark();
    m_creator = code;
  }
  m_lastHolder = code;
  ++m_handles;
}

void XmlCounted::Drop(const void* code) const noexcept {
  const XmlLock lock;
  if (m_handles == 0) {
    Report("was released once more than it was referenced", code);
    return;
  }
  if (--m_handles != 0) {
    return;
  }
  s_live.Remove(*this);
  if (m_pins == 0) {
    OnUnused();
  }
}

void XmlCounted::Unpin() const noexcept {
  const XmlLock lock;
  if (--m_pins == 0 && m_handles == 0) {
    OnUnused();
  }
}

bool XmlCounted::CheckUsable(const char* operation, const void* code) const {
  if (m_retired) {
    ReportXmlMisuse(std::string("an XML object was used (") + operation + ") after its last reference was released", code);
  }
  return !m_retired;
}

void XmlCounted::Retire() const noexcept {
  if (m_mark == 0) {
    XmlLiveList::Delete(*this);
    return;
  }
  Clear();
  m_retired = true;
  s_live.Quarantine(*this);
}

void XmlCounted::Report(const char* what, const void* code) const noexcept {
  try {
    ReportXmlMisuse((m_retired ? std::string("an XML object") : "the XML " + Describe()) + " " + what, code);
  } catch (...) {
    // A report that finds no memory is lost; the object stays unharmed.
  }
}

void ReportXmlMisuse(const std::string& what, const void* code) {
  const XmlUnlock unlock;
  XmlMisuseSink* const sink = s_sink;
  if (sink != nullptr) {
    sink->OnXmlMisuse(what, code);
  } else {
    std::fprintf(stderr, "devhost: %s\n", what.c_str());
  }
}

XmlMisuseSink* SetXmlMisuseSink(XmlMisuseSink* sink) noexcept {
  return s_sink.exchange(sink);
}

std::size_t LiveXmlObjects() noexcept {
  const XmlLock lock;
  return s_live.Size();
}

std::uint64_t XmlMark() noexcept {
  const XmlLock lock;
  return s_live.Mark();
}

std::vector<LiveXmlObject> LiveXmlObjectsSince(std::uint64_t mark) {
  const XmlLock lock;
  return s_live.Since(mark);
}

}  // namespace devhost

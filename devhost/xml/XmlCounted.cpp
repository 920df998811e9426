#include "devhost/xml/XmlCounted.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <mutex>

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

 private:
  const XmlCounted* m_newest = nullptr;
  std::size_t m_size = 0;
  std::uint64_t m_mark = 0;
  std::array<const XmlCounted*, 1024> m_quarantine{};
  std::size_t m_oldestRetired = 0;
};

namespace {

// None of them has a destructor: handles may still be dropped while the process ends.
XmlLiveList s_live;
std::mutex s_mutex;  // not held while a sink or OnUnused is called
std::atomic<XmlMisuseSink*> s_sink{nullptr};

using Lock = std::unique_lock<std::mutex>;

}  // namespace

void XmlCounted::Hold(const void* code) const noexcept {
  Lock lock(s_mutex);
  if (m_retired) {
    lock.unlock();
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
  Lock lock(s_mutex);
  if (m_handles == 0) {
    lock.unlock();
    Report("was released once more than it was referenced", code);
    return;
  }
  if (--m_handles != 0) {
    return;
  }
  s_live.Remove(*this);
  const bool unused = m_pins == 0;
  lock.unlock();
  if (unused) {
    OnUnused();
  }
}

void XmlCounted::Pin() const noexcept {
  const Lock lock(s_mutex);
  ++m_pins;
}

void XmlCounted::Unpin() const noexcept {
  Lock lock(s_mutex);
  const bool unused = --m_pins == 0 && m_handles == 0;
  lock.unlock();
  if (unused) {
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
    delete this;
    return;
  }
  Clear();
  const Lock lock(s_mutex);
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
  const Lock lock(s_mutex);
  return s_live.Size();
}

std::uint64_t XmlMark() noexcept {
  const Lock lock(s_mutex);
  return s_live.Mark();
}

std::vector<LiveXmlObject> LiveXmlObjectsSince(std::uint64_t mark) {
  const Lock lock(s_mutex);
  return s_live.Since(mark);
}

}  // namespace devhost

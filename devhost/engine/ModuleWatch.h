#ifndef DEVHOST_ENGINE_MODULE_WATCH_H
#define DEVHOST_ENGINE_MODULE_WATCH_H

#include <cstdint>
#include <string>

#include "devhost/driver/LogSink.h"
#include "devhost/xml/XmlMisuse.h"

namespace devhost {

class HostCore;
class LoadedDriver;

// Hears what modules do through the functions that they find in the process, `LogXMessage` and `H7XML`, and tells the
// observer. Those functions know no host, so one watch hears them, and with it one host works in a process. A watch inside
// the life of another one hears them in its place, and passes on what is about modules of the other one's drivers alone.
class ModuleWatch : private LogSink, private XmlMisuseSink {
 public:
  // `core` outlives the watch, and so does `around`, which may be null. Throws HostError when another one than `around`
  // hears the modules.
  explicit ModuleWatch(HostCore& core, ModuleWatch* around = nullptr);
  ~ModuleWatch() override;
  ModuleWatch(const ModuleWatch&) = delete;
  ModuleWatch& operator=(const ModuleWatch&) = delete;

  // Reports the drivers whose code holds XML objects that were handed out after `mark` (an XmlMark), or since the watch
  // began. Call it while their modules are loaded.
  void ReportLiveXml(std::uint64_t mark);
  void ReportLiveXml() { ReportLiveXml(m_mark); }
  // The same for one driver, since the watch began.
  void ReportLiveXmlOf(const LoadedDriver& driver);

 private:
  struct Culprits;
  Culprits CulpritsSince(std::uint64_t mark) const;
  bool IsOfAround(const void* code) const;
  void Log(unsigned int level, const char* line, const void* caller) noexcept override;
  void OnXmlMisuse(const std::string& what, const void* code) override;

  HostCore& m_core;
  ModuleWatch* const m_around;
  XmlMisuseSink* m_outerMisuse = nullptr;
  const std::uint64_t m_mark;
};

}  // namespace devhost

#endif

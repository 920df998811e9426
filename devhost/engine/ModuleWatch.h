#ifndef DEVHOST_ENGINE_MODULE_WATCH_H
#define DEVHOST_ENGINE_MODULE_WATCH_H

#include <cstdint>
#include <string>

#include "devhost/driver/LogSink.h"
#include "devhost/xml/XmlMisuse.h"

namespace devhost {

class HostCore;

// Hears what modules do through the functions that they find in the process, `LogXMessage` and `H7XML`, and tells the
// observer. Those functions know no host, so there is one watch in a process, and with it one host.
class ModuleWatch : private LogSink, private XmlMisuseSink {
 public:
  // `core` outlives the watch. Throws HostError when another one lives.
  explicit ModuleWatch(HostCore& core);
  ~ModuleWatch() override;
  ModuleWatch(const ModuleWatch&) = delete;
  ModuleWatch& operator=(const ModuleWatch&) = delete;

  // Reports the drivers whose code holds XML objects that were handed out after `mark` (an XmlMark), or since the watch
  // began. Call it while their modules are loaded.
  void ReportLiveXml(std::uint64_t mark);
  void ReportLiveXml() { ReportLiveXml(m_mark); }

 private:
  void Log(unsigned int level, const char* line, const void* caller) noexcept override;
  void OnXmlMisuse(const std::string& what, const void* code) override;

  HostCore& m_core;
  XmlMisuseSink* m_outerMisuse = nullptr;
  const std::uint64_t m_mark;
};

}  // namespace devhost

#endif

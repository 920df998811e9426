#include "devhost/engine/ModuleWatch.h"

#include <boost/algorithm/string/join.hpp>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "devhost/engine/HostCore.h"
#include "devhost/engine/LoadedDriver.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

std::string ByModule(const std::string& file) {
  return ", by module \"" + file + "\"";
}

// What is left alive, for a message: how many, and the first few by name.
std::string Summary(std::vector<std::string> descriptions) {
  constexpr std::size_t kShown = 3;
  const std::string count = Counted(descriptions.size(), "XML object");
  if (descriptions.size() > kShown) {
    descriptions.resize(kShown);
    descriptions.emplace_back("...");
  }
  return "left " + count + " alive: " + boost::join(descriptions, ", ");
}

}  // namespace

ModuleWatch::ModuleWatch(HostCore& core) : m_core(core), m_mark(XmlMark()) {
  LogSink* const other = SetLogSink(this);
  if (other != nullptr) {
    SetLogSink(other);
    throw HostError("there is a host in this process already; only one at a time is possible");
  }
  m_outerMisuse = SetXmlMisuseSink(this);
}

ModuleWatch::~ModuleWatch() {
  SetXmlMisuseSink(m_outerMisuse);
  SetLogSink(nullptr);
}

// Objects that no driver's code holds (the program's own, say) are nobody's fault.
void ModuleWatch::ReportLiveXml(std::uint64_t mark) {
  struct Culprit {
    HostCore::Drivers owners;  // of the module
    std::vector<std::string> objects;
  };
  std::map<std::string, Culprit> culprits;  // by module
  for (const LiveXmlObject& object : LiveXmlObjectsSince(mark)) {
    for (const void* const code : {object.creator, object.lastHolder}) {
      const HostCore::Drivers owners = m_core.OwnersOf(code);
      if (!owners.empty()) {
        Culprit& culprit = culprits[owners.front()->Entry().module];
        culprit.owners = owners;
        culprit.objects.push_back(object.description);
        break;
      }
    }
  }
  for (const auto& [module, culprit] : culprits) {
    m_core.Report(culprit.owners.size() == 1 ? culprit.owners.front().get() : nullptr,
                  Summary(culprit.objects) + ByModule(module), culprit.owners);
  }
}

void ModuleWatch::Log(unsigned int level, const char* line, const void* caller) noexcept {
  try {
    const std::shared_ptr<LoadedDriver> driver = m_core.DriverOf(caller);
    Occurrence occurrence{Occurrence::Kind::Log, 0, "", "", line};
    occurrence.level = level;
    m_core.Emit(driver.get(), std::move(occurrence), driver != nullptr ? HostCore::Drivers() : m_core.OwnersOf(caller));
  } catch (...) {
    // A line for which there is no memory is dropped.
  }
}

void ModuleWatch::OnXmlMisuse(const std::string& what, const void* code) {
  const HostCore::Drivers owners = m_core.OwnersOf(code);
  // Where several drivers share the module, the one that is being called need not be the one that did it.
  const std::shared_ptr<LoadedDriver> culprit = owners.size() > 1 ? nullptr : m_core.DriverOf(code);
  const std::string module = !owners.empty()      ? owners.front()->Entry().module
                             : culprit != nullptr ? culprit->Entry().module
                                                  : ModuleFileOf(code);
  m_core.Report(culprit.get(), what + ByModule(module), owners);
}

}  // namespace devhost

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

// By module: its drivers, and what they have left alive.
struct ModuleWatch::Culprits {
  struct Culprit {
    HostCore::Drivers owners;
    std::vector<std::string> objects;
  };
  std::map<std::string, Culprit> byModule;

  static void Report(HostCore& core, const std::string& module, const Culprit& culprit) {
    core.Report(culprit.owners.size() == 1 ? culprit.owners.front().get() : nullptr,
                Summary(culprit.objects) + ByModule(module), culprit.owners);
  }
};

ModuleWatch::ModuleWatch(HostCore& core, ModuleWatch* around) : m_core(core), m_around(around), m_mark(XmlMark()) {
  LogSink* const other = SetLogSink(this);
  if (other != m_around) {
    SetLogSink(other);
    throw HostError("there is a host in this process already; only one at a time is possible");
  }
  m_outerMisuse = SetXmlMisuseSink(this);
}

ModuleWatch::~ModuleWatch() {
  SetXmlMisuseSink(m_outerMisuse);
  SetLogSink(m_around);
}

// Objects that no driver's code holds (the program's own, say) are nobody's fault.
ModuleWatch::Culprits ModuleWatch::CulpritsSince(std::uint64_t mark) const {
  Culprits culprits;
  for (const LiveXmlObject& object : LiveXmlObjectsSince(mark)) {
    for (const void* const code : {object.creator, object.lastHolder}) {
      const HostCore::Drivers owners = m_core.OwnersOf(code);
      if (!owners.empty()) {
        Culprits::Culprit& culprit = culprits.byModule[owners.front()->Entry().module];
        culprit.owners = owners;
        culprit.objects.push_back(object.description);
        break;
      }
    }
  }
  return culprits;
}

void ModuleWatch::ReportLiveXml(std::uint64_t mark) {
  const Culprits culprits = CulpritsSince(mark);
  for (const auto& [module, culprit] : culprits.byModule) {
    Culprits::Report(m_core, module, culprit);
  }
}

// Where drivers share its module, another one may hold what is alive.
void ModuleWatch::ReportLiveXmlOf(const LoadedDriver& driver) {
  const Culprits culprits = CulpritsSince(m_mark);
  const auto found = culprits.byModule.find(driver.Entry().module);
  if (found != culprits.byModule.end() && found->second.owners.size() == 1) {
    Culprits::Report(m_core, found->first, found->second);
  }
}

bool ModuleWatch::IsOfAround(const void* code) const {
  return m_around != nullptr && m_core.OwnersOf(code).empty() && !m_around->m_core.OwnersOf(code).empty();
}

void ModuleWatch::Log(unsigned int level, const char* line, const void* caller) noexcept {
  try {
    if (IsOfAround(caller)) {
      m_around->Log(level, line, caller);
      return;
    }
    const std::shared_ptr<LoadedDriver> driver = m_core.DriverOf(caller);
    Occurrence occurrence{Occurrence::Kind::Log, 0, "", "", line};
    occurrence.level = level;
    m_core.Emit(driver.get(), std::move(occurrence), driver != nullptr ? HostCore::Drivers() : m_core.OwnersOf(caller));
  } catch (...) {
    // A line for which there is no memory is dropped.
  }
}

void ModuleWatch::OnXmlMisuse(const std::string& what, const void* code) {
  if (IsOfAround(code)) {
    m_around->OnXmlMisuse(what, code);
    return;
  }
  const HostCore::Drivers owners = m_core.OwnersOf(code);
  // Where several drivers share the module, the one that is being called need not be the one that did it.
  const std::shared_ptr<LoadedDriver> culprit = owners.size() > 1 ? nullptr : m_core.DriverOf(code);
  const std::string module = !owners.empty()      ? owners.front()->Entry().module
                             : culprit != nullptr ? culprit->Entry().module
                                                  : ModuleFileOf(code);
  m_core.Report(culprit.get(), what + ByModule(module), owners);
}

}  // namespace devhost

#include "devhost/engine/HostVariables.h"

#include <cstdint>
#include <limits>
#include <string>

#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr char kAdding[] = "adding of a variable";
constexpr char kRemoval[] = "removal of a variable";

std::string TitleOf(unsigned long deviceId, unsigned long variableId) {
  return "variable " + std::to_string(variableId) + " of device " + std::to_string(deviceId);
}

}  // namespace

void HostVariables::Add(const VariableEntry& entry) {
  constexpr unsigned long kLargest = std::numeric_limits<std::uint32_t>::max();
  if (entry.deviceId > kLargest || entry.variableId > kLargest) {
    throw HostError(TitleOf(entry.deviceId, entry.variableId) + " cannot be added; ids go up to 4294967295", kAdding);
  }
  if (m_manager.All().size() == m_most && m_manager.Find(entry.deviceId, entry.variableId) == nullptr) {
    throw HostError(TitleOf(entry.deviceId, entry.variableId) + " cannot be added; a project has up to " +
                        std::to_string(m_most) + " variables",
                    kAdding);
  }
  if (!m_manager.Add(entry)) {
    const VariableEntry& present = m_manager.Find(entry.deviceId, entry.variableId)->Entry();
    throw HostError("there is a " + std::string(present.user ? "user " : "") + TitleOf(entry.deviceId, entry.variableId) +
                        " already, " + Quoted(present.name) + "; allowed: each pair of ids once, user variables included",
                    kAdding);
  }
}

Variable& HostVariables::Get(unsigned long deviceId, unsigned long variableId, const std::string& call) const {
  Variable* const variable = m_manager.Find(deviceId, variableId);
  if (variable == nullptr) {
    throw HostError("there is no " + TitleOf(deviceId, variableId), call);
  }
  return *variable;
}

std::vector<VariableEntry> HostVariables::List(Host::Flags flags) const {
  std::vector<VariableEntry> entries;
  entries.reserve(m_manager.All().size());
  for (const auto& [key, variable] : m_manager.All()) {
    entries.push_back(variable.Entry());
    if (flags == Host::Flags::Initial) {
      entries.back().trapEnabled = variable.InitialFlag();
    }
  }
  return entries;
}

HostVariables::Taken HostVariables::Take(unsigned long deviceId, unsigned long variableId, bool user) {
  if (Get(deviceId, variableId, kRemoval).Entry().user != user) {
    throw HostError(TitleOf(deviceId, variableId) + (user ? " is not a user variable" : " is a user variable"), kRemoval);
  }
  const Taken taken = m_taken.emplace(m_taken.end());
  m_taken.back().push_back(m_manager.Take(deviceId, variableId));
  return taken;
}

}  // namespace devhost

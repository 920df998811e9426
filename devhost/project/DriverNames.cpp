#include "devhost/project/DriverNames.h"

#include <charconv>
#include <cstddef>
#include <stdexcept>
#include <system_error>

namespace devhost {

DriverNames::DriverNames(const std::vector<DriverEntry>& drivers) {
  constexpr std::size_t kMostListed = 20;
  std::size_t listed = 0;
  for (const DriverEntry& driver : drivers) {
    m_ids[driver.name] = driver.id;
    m_names[driver.id] = driver.name;
    if (listed < kMostListed) {
      m_allowed += (listed == 0 ? "" : ", ") + driver.name + " (" + std::to_string(driver.id) + ")";
    } else if (listed == kMostListed) {
      m_allowed += ", ...";
    }
    ++listed;
  }
  if (drivers.empty()) {
    m_allowed = "none";
  }
}

unsigned long DriverNames::Find(const std::string& word) const {
  const auto named = m_ids.find(word);
  if (named != m_ids.end()) {
    return named->second;
  }
  unsigned long id = 0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, id);
  if (error != std::errc() || stop != end || m_names.count(id) == 0) {
    throw std::runtime_error("there is no driver of that name or id; the drivers of this project are: " + m_allowed);
  }
  return id;
}

const std::string& DriverNames::Name(unsigned long id) const {
  return m_names.at(id);
}

}  // namespace devhost

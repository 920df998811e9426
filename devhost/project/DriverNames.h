#ifndef DEVHOST_PROJECT_DRIVER_NAMES_H
#define DEVHOST_PROJECT_DRIVER_NAMES_H

#include <string>
#include <unordered_map>
#include <vector>

#include "devhost/driver/DriverEntry.h"

namespace devhost {

// The drivers of a project by what people call them: a name or an id.
class DriverNames {
 public:
  explicit DriverNames(const std::vector<DriverEntry>& drivers);

  // The id of the driver that `word`, a name or an id, stands for. Throws std::runtime_error saying which ones there are.
  unsigned long Find(const std::string& word) const;
  // The name of a driver that Find has found.
  const std::string& Name(unsigned long id) const;

 private:
  std::unordered_map<std::string, unsigned long> m_ids;
  std::unordered_map<unsigned long, std::string> m_names;
  std::string m_allowed;
};

}  // namespace devhost

#endif

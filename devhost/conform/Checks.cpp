#include <algorithm>
#include <iterator>

#include "devhost/conform/Check.h"

namespace devhost {

void Expect(bool holds, const std::string& problem, const std::string& slot) {
  if (!holds) {
    throw Violation(problem, slot);
  }
}

std::string GroupOf(const Check& check) {
  const std::string id = check.id;
  return id.substr(0, id.find('-'));
}

const std::vector<Check>& Checks() {
  static const std::vector<Check> checks = [] {
    std::vector<Check> all;
    for (const auto group : {&ModuleChecks, &LifeChecks, &SettingsChecks, &ErasedChecks, &TrapsChecks, &FileChecks,
                             &CallsChecks, &ProcessChecks, &StateChecks, &ThrowChecks, &WholeChecks, &FuzzChecks}) {
      const std::vector<Check> some = group();
      all.insert(all.end(), some.begin(), some.end());
    }
    return all;
  }();
  return checks;
}

const Check* FindCheck(const std::string& id) {
  const std::vector<Check>& checks = Checks();
  const auto found = std::find_if(checks.begin(), checks.end(), [&id](const Check& check) { return check.id == id; });
  return found == checks.end() ? nullptr : &*found;
}

}  // namespace devhost

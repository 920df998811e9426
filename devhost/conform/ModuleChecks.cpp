// Group "module": what can be said of the file of a driver before it has made a driver.
#include "devhost/conform/Check.h"
#include "devhost/conform/Trial.h"
#include "devhost/driver/DriverModule.h"

namespace devhost {

namespace {

void Loads(Trial& trial) {
  try {
    const DriverModule module(trial.module);
  } catch (const ModuleError& error) {
    throw Violation(error.what());
  }
}

}  // namespace

std::vector<Check> ModuleChecks() {
  return {
      {"module-loads", Severity::Contract, Level::Basic, "",
       "The module loads with all its symbols bound, and exports GetCreationFunc and versionString.",
       "A host binds all symbols of a module when it loads it, and offers nothing but those that docs/host-interfaces.md\n"
       "lists. Texts and lists cross the border, so module and host need the same C++ library and the same std::string.\n"
       "While a module fails at this check, no other check is made.",
       &Loads}};
}

}  // namespace devhost

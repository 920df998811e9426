#ifndef DRIVERS_LOCALSNMPD_SERVED_DIRECTIVES_H
#define DRIVERS_LOCALSNMPD_SERVED_DIRECTIVES_H

#include <string>

#include "devhost/snmpd/Directive.h"

namespace drivers {

// Why the daemon does not get this directive; empty when it gets it. The words repeat nothing of the directive, not even its
// name: what stands behind the name of one is hidden where it may be a community.
// A directive that is not known here is left out: it may name a file, open a port, or run a program.
std::string WhyNotServed(const devhost::Directive& directive);

// Whether the directive is left out without a word: driver.conf says the same in the driver's own way.
bool IsReplacedByDriver(const devhost::Directive& directive);

}  // namespace drivers

#endif

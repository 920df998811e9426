#ifndef DEVHOST_CHECK_ADVICE_H
#define DEVHOST_CHECK_ADVICE_H

#include <string>
#include <vector>

#include "devhost/check/Finding.h"

namespace devhost {

// What will surprise the owner of a device settings element once its settings are written. `settings` is the element as
// XML; `name` is for findings, which stand at the lines of its child elements, in their order. Throws XmlError when it is
// not well-formed.
std::vector<Finding> Advise(const std::string& settings, const std::string& name, bool showSecrets);

}  // namespace devhost

#endif

#ifndef DEVHOST_CHECK_ADVICE_H
#define DEVHOST_CHECK_ADVICE_H

#include <set>
#include <string>
#include <vector>

#include "devhost/check/Finding.h"

namespace devhost {

// What will surprise the owner of a device settings element once its settings are written. `settings` is the element as
// XML; `name` is for findings, which stand at the lines of its child elements, in their order. `held` has the names of the
// settings that the device holds, which it would lose when they are missing; null when the device is not known. Throws
// XmlError when the settings are not well-formed.
std::vector<Finding> Advise(const std::string& settings, const std::string& name, bool showSecrets,
                            const std::set<std::string>* held = nullptr);

// The same for an element that names its device itself, as a tool sends it.
std::vector<Finding> AdviseOnRequest(const std::string& settings, const std::string& name, bool showSecrets);

}  // namespace devhost

#endif

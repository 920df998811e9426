#ifndef DEVHOST_JSON_FINDING_OBJECT_H
#define DEVHOST_JSON_FINDING_OBJECT_H

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "devhost/check/Finding.h"

namespace devhost {

// "error", "warning" or "note".
const char* NameOf(Severity severity);

// A finding: file, line (0 for the whole file), severity, rule, reason, remedy.
nlohmann::ordered_json FindingObject(const Finding& finding);

// A list of them.
nlohmann::ordered_json FindingObjects(const std::vector<Finding>& findings);

}  // namespace devhost

#endif

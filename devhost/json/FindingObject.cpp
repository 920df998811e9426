#include "devhost/json/FindingObject.h"

#include <nlohmann/json.hpp>

namespace devhost {

using nlohmann::ordered_json;

const char* NameOf(Severity severity) {
  return severity == Severity::Error ? "error" : severity == Severity::Warning ? "warning" : "note";
}

ordered_json FindingObject(const Finding& finding) {
  return {{"file", finding.file}, {"line", finding.line},     {"severity", NameOf(finding.severity)},
          {"rule", finding.rule}, {"reason", finding.reason}, {"remedy", finding.remedy}};
}

ordered_json FindingObjects(const std::vector<Finding>& findings) {
  ordered_json objects = ordered_json::array();
  for (const Finding& finding : findings) {
    objects.push_back(FindingObject(finding));
  }
  return objects;
}

}  // namespace devhost

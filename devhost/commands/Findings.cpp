#include "devhost/commands/Findings.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>

#include "devhost/json/FindingObject.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

std::size_t CountOf(const std::vector<Finding>& findings, Severity severity) {
  return static_cast<std::size_t>(std::count_if(
      findings.begin(), findings.end(), [severity](const Finding& finding) { return finding.severity == severity; }));
}

}  // namespace

std::string FindingText(const Finding& finding) {
  const std::string line = finding.line == 0 ? "" : ":" + std::to_string(finding.line);
  return OneLine(finding.file) + line + ": " + NameOf(finding.severity) + ": " + OneLine(finding.reason) + " [" +
         finding.rule + "]\n    " + OneLine(finding.remedy) + "\n";
}

std::string FindingJson(const Finding& finding) {
  return FindingObject(finding).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

ExitStatus PrintFindings(const std::vector<Finding>& findings, const std::string& file, bool json, Output& out) {
  for (const Finding& finding : findings) {
    out.Write(json ? FindingJson(finding) : FindingText(finding));
  }
  const std::size_t notes = CountOf(findings, Severity::Note);
  const bool clean = notes == findings.size();
  if (!json) {
    out.Write(OneLine(file) + ": " +
              (clean ? "no findings"
                     : Counted(CountOf(findings, Severity::Error), "error") + ", " +
                           Counted(CountOf(findings, Severity::Warning), "warning")) +
              (notes == 0 ? "" : ", " + Counted(notes, "note")) + "\n");
  }
  return clean ? ExitStatus::Good : ExitStatus::Failed;
}

}  // namespace devhost

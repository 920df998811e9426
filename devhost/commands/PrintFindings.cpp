#include "devhost/commands/PrintFindings.h"

#include <algorithm>

#include "devhost/commands/FindingText.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

std::string Counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::size_t CountOf(const std::vector<Finding>& findings, Severity severity) {
  return static_cast<std::size_t>(std::count_if(
      findings.begin(), findings.end(), [severity](const Finding& finding) { return finding.severity == severity; }));
}

}  // namespace

bool PrintFindings(const std::vector<Finding>& findings, const std::string& file, bool json, Output& out) {
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
  return !clean;
}

}  // namespace devhost

#include "devhost/check/PrintFindings.h"

#include <algorithm>

#include "devhost/app/Output.h"
#include "devhost/app/Words.h"

namespace devhost {

namespace {

std::string Counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

bool PrintFindings(const std::vector<Finding>& findings, const std::string& file, bool json, Output& out) {
  for (const Finding& finding : findings) {
    out.Write(json ? FindingJson(finding) : FindingText(finding));
  }
  const auto errors = static_cast<std::size_t>(std::count_if(
      findings.begin(), findings.end(), [](const Finding& finding) { return finding.severity == Severity::Error; }));
  if (!json) {
    out.Write(
        OneLine(file) + ": " +
        (findings.empty() ? "no findings" : Counted(errors, "error") + ", " + Counted(findings.size() - errors, "warning")) +
        "\n");
  }
  return !findings.empty();
}

}  // namespace devhost

#include "devhost/operations/Explanation.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "devhost/check/CheckFile.h"
#include "devhost/operations/Overridden.h"
#include "devhost/operations/ReadLines.h"

namespace devhost {

Explanation::Explanation(const std::string& file, const std::string& path, bool showSecrets) {
  const std::vector<Finding> overriding = OverridingLines(file, path, "", showSecrets);
  CheckMeans means;
  means.showSecrets = showSecrets;
  means.circumstances.path = path;
  const std::vector<Finding> findings = CheckText(file, "", means).findings;
  for (const ReadLine& line : ReadLinesOf(file, path)) {
    const auto isHere = [&line](const Finding& finding) {
      const std::string number = std::to_string(finding.line);
      const std::string place = finding.file.empty() ? "line " + number : finding.file + ":" + number;
      return place == line.place && finding.severity == Severity::Error;
    };
    Line known = {line.setting.keyword, line.setting.rest, {}};
    if (std::any_of(overriding.begin(), overriding.end(), isHere)) {
      known.problem = "shadowed by " + line.place + (line.isIncluded ? "" : " of the foreign text");
    } else if (const auto found = std::find_if(findings.begin(), findings.end(), isHere); found != findings.end()) {
      known.problem = line.place + ": " + found->reason;
    }
    m_lines.push_back(std::move(known));
  }
}

std::string Explanation::Of(std::string_view keyword) const {
  const auto last = std::find_if(m_lines.rbegin(), m_lines.rend(),
                                 [keyword](const Line& line) { return line.keyword == keyword && !line.problem.empty(); });
  return last == m_lines.rend() ? "" : last->problem;
}

std::string Explanation::LastValue(std::string_view keyword) const {
  const auto last =
      std::find_if(m_lines.rbegin(), m_lines.rend(), [keyword](const Line& line) { return line.keyword == keyword; });
  return last == m_lines.rend() ? "" : last->value;
}

}  // namespace devhost

#include "devhost/check/Report.h"

#include <algorithm>
#include <utility>

#include "devhost/secrets/Secrets.h"
#include "devhost/text/Words.h"

namespace devhost {

void Report::Add(std::string reason, std::string remedy) {
  Count& count = m_counts[m_rule];
  count.severity = m_severity;
  if (++count.all <= kMostOfOneRule) {
    m_findings.push_back({m_file, m_line, m_severity, m_rule, std::move(reason), std::move(remedy)});
  }
}

bool Report::IsFull() const {
  const auto count = m_counts.find(m_rule);
  return count != m_counts.end() && count->second.all > kMostOfOneRule;
}

std::string Report::Secret(std::string_view text) const {
  return m_showSecrets ? Quoted(text) : kMask;
}

std::vector<Finding> Report::Take() {
  std::stable_sort(m_findings.begin(), m_findings.end(),
                   [](const Finding& left, const Finding& right) { return left.line < right.line; });
  for (const auto& [rule, count] : m_counts) {
    if (count.all > kMostOfOneRule) {
      m_findings.push_back({m_file, 0, count.severity, rule,
                            std::to_string(count.all - kMostOfOneRule) + " more findings of this rule are not listed",
                            "fix those that are listed first"});
    }
  }
  std::stable_partition(m_findings.begin(), m_findings.end(),
                        [](const Finding& finding) { return finding.severity != Severity::Note; });
  m_counts.clear();
  return std::move(m_findings);
}

std::string Report::LineName(std::size_t line) const {
  return m_lineName ? m_lineName(line) : "line " + std::to_string(line);
}

}  // namespace devhost

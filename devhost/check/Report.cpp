#include "devhost/check/Report.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>
#include <utility>

#include "devhost/secrets/KnownSecrets.h"
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

std::pair<std::size_t, const std::string*> Report::FileOf(std::size_t line) const {
  const auto next = m_files.upper_bound(line);
  if (next == m_files.begin()) {
    return {0, &m_file};
  }
  return {std::prev(next)->first, &std::prev(next)->second};
}

void Report::PutIntoFiles() {
  std::set<std::tuple<std::string, std::size_t, std::string, std::string>> seen;
  std::vector<Finding> kept;
  kept.reserve(m_findings.size());
  for (Finding& finding : m_findings) {
    const auto [first, file] = FileOf(finding.line);
    finding.file = *file;
    finding.line -= first;
    // Within the file that is checked, each line is read once.
    if (first == 0 || seen.emplace(finding.file, finding.line, finding.rule, finding.reason).second) {
      kept.push_back(std::move(finding));
    }
  }
  m_findings = std::move(kept);
}

std::vector<Finding> Report::Take() {
  std::stable_sort(m_findings.begin(), m_findings.end(),
                   [](const Finding& left, const Finding& right) { return left.line < right.line; });
  PutIntoFiles();
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
  if (m_lineName) {
    return m_lineName(line);
  }
  const auto [first, file] = FileOf(line);
  const std::string name = "line " + std::to_string(line - first);
  return file == FileOf(m_line).second ? name : name + " of " + *file;
}

}  // namespace devhost

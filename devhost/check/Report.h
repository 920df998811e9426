#ifndef DEVHOST_CHECK_REPORT_H
#define DEVHOST_CHECK_REPORT_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "devhost/check/Finding.h"

namespace devhost {

// Takes what the rules find in one file.
class Report {
 public:
  // A file of nothing but mistakes must not fill the memory: of each rule so many findings are kept, the rest is counted.
  static constexpr std::size_t kMostOfOneRule = 1000;

  Report(std::string file, bool showSecrets) : m_file(std::move(file)), m_showSecrets(showSecrets) {}

  // Names the rule that the findings which follow belong to.
  void Begin(const char* rule, Severity severity) {
    m_rule = rule;
    m_severity = severity;
  }
  void Add(std::size_t line, std::string reason, std::string remedy);

  // A community, as a reason or a remedy may show it.
  std::string Secret(std::string_view text) const;
  bool ShowsSecrets() const { return m_showSecrets; }
  // Another line, as a reason may name it.
  std::string LineName(std::size_t line) const;
  // Has lines named in another way than "line 12".
  void NameLines(std::function<std::string(std::size_t)> name) { m_lineName = std::move(name); }

  // All findings by line, those of one line as they came. One more behind them for each rule of which some were left out.
  // The notes come last.
  std::vector<Finding> Take();

 private:
  struct Count {
    std::size_t all = 0;
    Severity severity = Severity::Warning;
  };
  std::string m_file;
  bool m_showSecrets;
  const char* m_rule = "";
  Severity m_severity = Severity::Warning;
  std::vector<Finding> m_findings;
  std::map<std::string, Count> m_counts;
  std::function<std::string(std::size_t)> m_lineName;
};

}  // namespace devhost

#endif

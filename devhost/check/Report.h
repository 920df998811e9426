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

// Collects what the rules find in one file.
class Report {
 public:
  // At most this many findings of a rule are kept, the rest is counted: a file of nothing but mistakes must not fill the
  // memory.
  static constexpr std::size_t kMostOfOneRule = 1000;

  Report(std::string file, bool showSecrets) : m_file(std::move(file)), m_showSecrets(showSecrets) {}

  const std::string& File() const { return m_file; }

  // Lines from this number on are those of another file. The number itself stands for all of that file.
  void AddFile(std::size_t line, const std::string& name) { m_files.emplace_hint(m_files.end(), line, name); }

  // Names the rule and the line that the findings which follow belong to; 0 stands for the whole file.
  void Begin(const char* rule, Severity severity, std::size_t line = 0) {
    m_rule = rule;
    m_severity = severity;
    m_line = line;
  }
  // Whether further findings of the rule would only be counted.
  bool IsFull() const;
  // Adds a finding: what is wrong, and what the owner can do about it.
  void Add(std::string reason, std::string remedy);

  // The community in quotes, or ***** unless secrets are shown.
  std::string Secret(std::string_view text) const;
  bool ShowsSecrets() const { return m_showSecrets; }
  // How a reason names another line: "line 12".
  std::string LineName(std::size_t line) const;
  // Replaces how lines are named.
  void NameLines(std::function<std::string(std::size_t)> name) { m_lineName = std::move(name); }

  // All findings by file and line, those of one line in the order in which they were added; then one for each rule of which
  // some were left out; notes last. What is found again in a file that is included twice is listed once. Called once.
  std::vector<Finding> Take();

 private:
  struct Count {
    std::size_t all = 0;
    Severity severity = Severity::Warning;
  };
  // The file that a line belongs to, and the number of that file's line 0.
  std::pair<std::size_t, const std::string*> FileOf(std::size_t line) const;

  void PutIntoFiles();

  std::string m_file;
  std::map<std::size_t, std::string> m_files;
  bool m_showSecrets;
  const char* m_rule = "";
  Severity m_severity = Severity::Warning;
  std::size_t m_line = 0;
  std::vector<Finding> m_findings;
  std::map<std::string, Count> m_counts;
  std::function<std::string(std::size_t)> m_lineName;
};

}  // namespace devhost

#endif

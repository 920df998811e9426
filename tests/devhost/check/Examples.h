#ifndef TESTS_DEVHOST_CHECK_EXAMPLES_H
#define TESTS_DEVHOST_CHECK_EXAMPLES_H

#include <string>
#include <vector>

#include "devhost/check/Rules.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

// The example of a rule: a file in which it finds something.
inline std::string Example(const std::string& rule) {
  return testsupport::ScratchFolder::ReadFile(CHECK_DATA_FOLDER "/" + rule + ".conf");
}

// A file that looks like it, in which the rule finds nothing.
inline std::string NearMiss(const std::string& rule) {
  return testsupport::ScratchFolder::ReadFile(CHECK_DATA_FOLDER "/" + rule + ".near.conf");
}

inline std::vector<Finding> Judged(const std::string& text, const std::string& name = "snmpd.conf", bool showSecrets = false,
                                   const Circumstances& circumstances = {}) {
  Report report(name, showSecrets);
  JudgeText(text, report, circumstances);
  return report.Take();
}

// Where the rule finds something at all.
inline Circumstances CircumstancesOf(const std::string& rule) {
  Circumstances circumstances;
  circumstances.isOff = rule == "still-lets-in";
  circumstances.path = CHECK_DATA_FOLDER "/" + rule + ".conf";
  return circumstances;
}

// The lines in which a rule finds something.
inline std::vector<std::size_t> LinesFound(const std::string& rule, const std::string& text) {
  std::vector<std::size_t> lines;
  for (const Finding& finding : Judged(text, "snmpd.conf", false, CircumstancesOf(rule))) {
    if (finding.rule == rule) {
      lines.push_back(finding.line);
    }
  }
  return lines;
}

}  // namespace devhost

#endif

#include <cstdio>

#include "devhost/check/Rules.h"

// Files that other files include, and whom files belong to.
namespace devhost {

namespace {

constexpr unsigned kWidestMode = 0640;

void JudgeInclude(const Sight& sight, Report& report) {
  if (sight.included != nullptr && !sight.included->problem.empty()) {
    report.Add(sight.included->problem, sight.included->remedy);
  }
}

}  // namespace

void JudgeMode(unsigned mode, Report& report, std::size_t line) {
  const unsigned permissions = mode & 0777U;
  if ((permissions & ~kWidestMode) != 0) {
    char text[8];
    std::snprintf(text, sizeof text, "%04o", permissions);
    const char* const who = (permissions & 0022U) != 0   ? "others besides its owner may change it"
                            : (permissions & 0004U) != 0 ? "others besides its owner and group may read the communities"
                                                         : "nobody needs to execute it";
    report.Begin(kFileModeRule, Severity::Warning, line);
    report.Add(std::string("the file's mode is ") + text + ": " + who, "chmod 640, or 600");
  }
}

std::vector<Rule> IncludeRules() {
  return {{"include-not-read", Severity::Error, JudgeInclude}};
}

}  // namespace devhost

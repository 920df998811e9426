#include "devhost/check/CheckFile.h"

#include <sys/stat.h>

#include <cstdio>

#include "devhost/check/DaemonParser.h"
#include "devhost/check/Report.h"
#include "devhost/check/Rules.h"
#include "devhost/system/FileText.h"

namespace devhost {

namespace {

constexpr mode_t kWidestMode = 0640;

void JudgeMode(mode_t mode, Report& report) {
  const mode_t permissions = mode & 0777U;
  if ((permissions & ~kWidestMode) != 0) {
    char text[8];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(permissions));
    const char* const who = (permissions & 0022U) != 0   ? "others besides its owner may change it"
                            : (permissions & 0004U) != 0 ? "others besides its owner and group may read the communities"
                                                         : "nobody needs to execute it";
    report.Begin(kFileModeRule, Severity::Warning);
    report.Add(std::string("the file's mode is ") + text + ": " + who, "chmod 640, or 600");
  }
}

// `path` is empty for a text that is not in a regular file.
CheckResult Check(const std::string& path, const std::string& text, const CheckMeans& means, Report& report) {
  CheckResult result;
  result.unjudged = JudgeText(text, report, means.circumstances);
  result.daemonError = means.askDaemon ? AskDaemon(path, text, report) : "";
  result.findings = report.Take();
  return result;
}

}  // namespace

CheckResult CheckFile(const std::string& path, const CheckMeans& means) {
  const std::string text = ReadFileText(path);
  Report report(path, means.showSecrets);
  struct stat file = {};
  const bool isRegular = ::stat(path.c_str(), &file) == 0 && S_ISREG(file.st_mode);
  if (isRegular) {
    JudgeMode(file.st_mode, report);
  }
  return Check(isRegular ? path : "", text, means, report);
}

CheckResult CheckText(const std::string& text, const std::string& name, const CheckMeans& means) {
  Report report(name, means.showSecrets);
  return Check("", text, means, report);
}

}  // namespace devhost

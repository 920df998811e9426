#include "devhost/check/CheckFile.h"

#include <sys/stat.h>

#include <filesystem>

#include "devhost/check/DaemonParser.h"
#include "devhost/check/Report.h"
#include "devhost/check/Rules.h"
#include "devhost/system/FileText.h"

namespace devhost {

namespace {

// `path` is empty for a text that is not in a regular file.
CheckResult Check(const std::string& path, const std::string& text, const CheckMeans& means, Report& report) {
  CheckResult result;
  Circumstances circumstances = means.circumstances;
  if (!path.empty()) {
    circumstances.path = std::filesystem::absolute(path).string();
  }
  DaemonText forDaemon;
  result.unjudged = JudgeText(text, report, circumstances, means.askDaemon ? &forDaemon : nullptr);
  result.daemonError = means.askDaemon ? AskDaemon(forDaemon, report) : "";
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

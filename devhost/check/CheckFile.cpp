#include "devhost/check/CheckFile.h"

#include <sys/stat.h>

#include "devhost/check/DaemonParser.h"
#include "devhost/check/Report.h"
#include "devhost/check/Rules.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// `path` is empty for a text that has no regular file.
CheckResult Check(const std::string& text, const std::string& path, const CheckMeans& means, const std::string& name,
                  Report& report) {
  CheckResult result;
  JudgeText(text, report);
  if (means.askDaemon) {
    try {
      AskDaemon(path, name, text, report);
    } catch (const DaemonParserError& error) {
      result.daemonError = OneLine(error.what());
    }
  }
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
    report.Begin(kFileModeRule, Severity::Warning);
    JudgeFileMode(file.st_mode, report);
  }
  return Check(text, isRegular ? path : "", means, path, report);
}

CheckResult CheckText(const std::string& text, const std::string& name, const CheckMeans& means) {
  Report report(name, means.showSecrets);
  return Check(text, "", means, name, report);
}

}  // namespace devhost

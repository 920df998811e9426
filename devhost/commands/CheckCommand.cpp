#include "devhost/commands/CheckCommand.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "devhost/check/DaemonParser.h"
#include "devhost/check/Report.h"
#include "devhost/check/Rules.h"
#include "devhost/commands/PrintFindings.h"
#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr int kUnreadable = 2;

// One file. Exit status as of the whole command.
int CheckFile(const std::string& path, const CheckOptions& options, Output& out, Output& errors) {
  const bool isInput = path == "-";
  const std::string name = isInput ? "standard input" : path;
  Report report(name, options.showSecrets);
  int status = 0;
  try {
    const std::string text = isInput ? ReadDescriptorText(STDIN_FILENO, name) : ReadFileText(path);
    struct stat file = {};
    const bool isRegular = !isInput && ::stat(path.c_str(), &file) == 0 && S_ISREG(file.st_mode);
    if (isRegular) {
      report.Begin(kFileModeRule, Severity::Warning);
      JudgeFileMode(file.st_mode, report);
    }
    JudgeText(text, report);
    if (options.daemon) {
      AskDaemon(isRegular ? path : "", name, text, report);
    }
  } catch (const FileError& error) {
    errors.Write("devhost: " + OneLine(error.what()) + "\n");
    return kUnreadable;
  } catch (const DaemonParserError& error) {
    errors.Write("devhost: " + OneLine(error.what()) + "\n");
    status = kUnreadable;
  }
  const bool found = PrintFindings(report.Take(), name, options.json, out);
  return status != 0 ? status : found ? 1 : 0;
}

}  // namespace

int RunCheck(const CheckOptions& options, Output& out, Output& errors) {
  int status = 0;
  for (const std::string& path : options.files) {
    status = std::max(status, CheckFile(path, options, out, errors));
  }
  return status;
}

}  // namespace devhost

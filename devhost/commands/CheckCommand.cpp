#include "devhost/commands/CheckCommand.h"

#include <unistd.h>

#include <algorithm>

#include "devhost/check/CheckFile.h"
#include "devhost/commands/PrintFindings.h"
#include "devhost/system/FileText.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr int kUnreadable = 2;

// One file. Exit status as of the whole command.
int CheckOne(const std::string& path, const CheckOptions& options, Output& out, Output& errors) {
  const bool isInput = path == "-";
  const std::string name = isInput ? "standard input" : path;
  const CheckMeans means{options.daemon, options.showSecrets};
  try {
    const CheckResult result =
        isInput ? CheckText(ReadDescriptorText(STDIN_FILENO, name), name, means) : CheckFile(path, means);
    if (!result.daemonError.empty()) {
      errors.Write("devhost: " + result.daemonError + "\n");
    }
    const bool found = PrintFindings(result.findings, name, options.json, out);
    return !result.daemonError.empty() ? kUnreadable : found ? 1 : 0;
  } catch (const FileError& error) {
    errors.Write("devhost: " + OneLine(error.what()) + "\n");
    return kUnreadable;
  }
}

}  // namespace

int RunCheck(const CheckOptions& options, Output& out, Output& errors) {
  int status = 0;
  for (const std::string& path : options.files) {
    status = std::max(status, CheckOne(path, options, out, errors));
  }
  return status;
}

}  // namespace devhost

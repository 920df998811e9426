#include <unistd.h>

#include <algorithm>
#include <string>

#include "devhost/check/CheckFile.h"
#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/Findings.h"
#include "devhost/system/FileText.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kFiles{"files", "", "The files, - for standard input", Takes::Paths, true};
const CommandOption kDaemon{"--daemon", "", "Have the parser of the installed snmpd read the files, too"};

constexpr char kFooter[] =
    "Each finding is one line, FILE:LINE: SEVERITY: reason [RULE], and a second one with what\n"
    "to do. An error means that the daemon or the agent does something else than the file\n"
    "seems to say, or that text will be lost; a warning, that it may surprise; a note, which is\n"
    "not counted as a finding, that a device which has lost its settings would misread the\n"
    "line. The rules are in docs/check-rules.md.\n"
    "\n"
    "Exit status: 0 no finding; 1 findings; 2 wrong usage, a file that cannot be read, or a\n"
    "daemon that cannot be asked.\n"
    "\n"
    "Example: look at this machine's file, with the daemon's own parser, too.\n"
    "\n"
    "  devhost check --daemon /etc/snmp/snmpd.conf";

ExitStatus CheckOne(const std::string& path, const Arguments& arguments, Console& console) {
  const bool isInput = path == "-";
  const std::string name = isInput ? "standard input" : path;
  const CheckMeans means{arguments.Has(kDaemon), arguments.Has(kShowSecrets)};
  try {
    const CheckResult result =
        isInput ? CheckText(ReadDescriptorText(STDIN_FILENO, name), name, means) : CheckFile(path, means);
    if (!result.daemonError.empty()) {
      console.Complain(result.daemonError);
    }
    const ExitStatus status = PrintFindings(result.findings, name, arguments.Has(kJson), console.Out());
    return result.daemonError.empty() ? status : ExitStatus::Wrong;
  } catch (const FileError& error) {
    console.Complain(error.what());
    return ExitStatus::Wrong;
  }
}

// Each file is checked whatever became of the one before.
ExitStatus Check(const Arguments& arguments, Console& console) {
  ExitStatus status = ExitStatus::Good;
  for (const std::string& path : arguments.Texts(kFiles)) {
    status = std::max(status, CheckOne(path, arguments, console));
  }
  return status;
}

}  // namespace

Command MakeCheck() {
  return {
      "check", "Say what in an snmpd.conf will surprise its owner", {kFiles, kJson, kDaemon, kShowSecrets}, kFooter, &Check};
}

}  // namespace devhost

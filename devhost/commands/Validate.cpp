#include "devhost/contract/Validate.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/Findings.h"
#include "devhost/system/FileText.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kDocuments{"files", "", "XML files, - for standard input", Takes::Paths, true};
const CommandOption kReply{"--reply", "", "A managedDevice is what the agent has written, not what a tool sends"};

constexpr char kFooter[] =
    "The root element says what a file is: settings (managedDevice), a reply, a notification,\n"
    "the agent's state, or a project file. Each finding is two lines as with \"devhost check\".\n"
    "The schemas in contract/ ask for the same; they are for other programs. Values are never\n"
    "printed. What settings do to an SNMP daemon is said by \"devhost advise\".\n"
    "\n"
    "Exit status: 0 no finding; 1 findings; 2 wrong usage, or a file that cannot be read.\n"
    "\n"
    "Example: are these settings complete?\n"
    "\n"
    "  devhost validate kitchen.xml";

ExitStatus ValidateOne(const std::string& path, const Arguments& arguments, Console& console) {
  try {
    const NamedText file = ReadNamedText(path);
    std::vector<Finding> findings;
    for (Mismatch& mismatch : ValidateDocument(file.text, arguments.Has(kReply))) {
      findings.push_back({file.name, mismatch.line, Severity::Error, NameOf(mismatch.kind), std::move(mismatch.reason),
                          std::move(mismatch.remedy)});
    }
    return PrintFindings(findings, file.name, arguments.Has(kJson), console.Out());
  } catch (const FileError& error) {
    console.Complain(error.what());
    return ExitStatus::Wrong;
  }
}

// Each file is read whatever became of the one before.
ExitStatus ValidateAll(const Arguments& arguments, Console& console) {
  ExitStatus worst = ExitStatus::Good;
  for (const std::string& path : arguments.Texts(kDocuments)) {
    worst = std::max(worst, ValidateOne(path, arguments, console));
  }
  return worst;
}

}  // namespace

Command MakeValidate() {
  return {"validate",
          "Hold files against the contract between tool and agent",
          {kDocuments, kReply, kJson},
          kFooter,
          &ValidateAll};
}

}  // namespace devhost

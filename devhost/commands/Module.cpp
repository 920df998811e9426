#include <string>

#include "devhost/commands/Commands.h"
#include "devhost/driver/ModuleNote.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kFile{"file", "", "The file of the module", Takes::Path, true};

constexpr char kFooter[] =
    "Prints a line for each fact that the module states: its version, the number of its\n"
    "contract, the enterprise number (the agent only), and the processor that it is for. The\n"
    "module is read and not loaded, so it may be for another processor. Host, agent and\n"
    "drivers fit together when they have the same contract number.\n"
    "\n"
    "Exit status: 0 printed; 1 the output could not be written; 2 wrong usage, a file that cannot\n"
    "be read, or one that is not a module or states nothing.\n"
    "\n"
    "Example: which agent is this?\n"
    "\n"
    "  devhost module snmp_configuration_agent.so";

ExitStatus PrintModule(const Arguments& arguments, Console& console) {
  const std::string path = arguments.Text(kFile);
  const ModuleNote note = ReadModuleNote(ReadRegularFile(path), path);
  const auto print = [&console](const char* name, const std::string& value) {
    if (!value.empty()) {
      console.Out().Write(std::string(name) + " " + OneLine(value) + "\n");
    }
  };
  print("version", note.version);
  print("contract", note.contract);
  print("enterprise", note.enterpriseNumber);
  print("processor", note.processor);
  return ExitStatus::Good;
}

}  // namespace

Command MakeModule() {
  return {"module", "Print what a module's file says about the module", {kFile}, kFooter, &PrintModule};
}

}  // namespace devhost

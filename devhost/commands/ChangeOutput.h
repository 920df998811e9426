#ifndef DEVHOST_COMMANDS_CHANGE_OUTPUT_H
#define DEVHOST_COMMANDS_CHANGE_OUTPUT_H

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>
#include <vector>

#include "devhost/commands/Command.h"
#include "devhost/operations/Apply.h"

// What commands that change a device have in common: options, a question, and what they print.
namespace devhost {

inline const CommandOption kAccept{
    "--accept", "RULES", "Rules whose errors do not stop the change, with commas between them", CommandOption::Takes::Text};
inline const CommandOption kDryRun{"--dry-run", "", "Say what would change, and change nothing"};
inline const CommandOption kDiff{"--diff", "", "Print the difference of the file, too"};
inline const CommandOption kYes{"--yes", "", "Do not ask before the change"};
inline const CommandOption kChangeJson{
    "--json", "", "Print one JSON object: device, verdict, changed, snapshot, difference, settings, findings, messages"};

// The rules that `kAccept` names.
std::set<std::string> AcceptedRules(const Arguments& arguments);

// Whether the command may go on without a question that nobody could answer. Complains when it may not.
bool MayGoOn(const Arguments& arguments, Console& console);

// What else a command says about a plan, a line each.
using Remarks = std::function<std::vector<std::string>(const Plan&)>;

// Plans the change, asks for it where it has to, makes it, and prints all of that as the options say. Throws what PlanChange
// and ApplyChange throw, before anything is changed.
ExitStatus MakeChange(const Change& change, const Remarks& remarks, const Arguments& arguments, Console& console);

// Runs what may throw before anything is changed: prints the error then, and the status is Wrong. A driver that ends the
// process gives that status, too.
ExitStatus GuardChange(Console& console, const std::function<ExitStatus()>& run);

// Settings that differ, as JSON and as lines of text.
nlohmann::ordered_json SettingObjects(const std::vector<SettingChange>& settings);
std::string SettingLines(const std::vector<SettingChange>& settings);

}  // namespace devhost

#endif

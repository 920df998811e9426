#ifndef DEVHOST_COMMANDS_CHANGE_OUTPUT_H
#define DEVHOST_COMMANDS_CHANGE_OUTPUT_H

#include <string>

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

// Whether the command may go on without a question that nobody could answer. Complains when it may not.
bool MayGoOn(const Arguments& arguments, Console& console);

// Plans the change, asks for it where it has to, makes it, and prints all of that as the options say. `more` is said about
// the plan, a line each. Throws what PlanChange and ApplyChange throw, before anything is changed.
ExitStatus MakeChange(const Change& change, const std::vector<std::string>& more, const Arguments& arguments,
                      Console& console);

}  // namespace devhost

#endif

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

class Output;
struct ProbeReport;

inline const CommandOption kAccept{
    "--accept", "RULES", "Rules whose errors do not stop the change, with commas between them", CommandOption::Takes::Text};
inline const CommandOption kDryRun{"--dry-run", "", "Say what would change, and change nothing"};
inline const CommandOption kDiff{"--diff", "", "Print the difference of the file, too"};
inline const CommandOption kYes{"--yes", "", "Do not ask before the change"};
inline const CommandOption kRestart{"--restart-command", "WORDS",
                                    "Run this program, without a shell, when the file was changed",
                                    CommandOption::Takes::Text};
inline const CommandOption kNoProbe{"--no-probe", "", "Do not ask the daemon afterwards what it serves"};
inline const CommandOption kChangeJson{
    "--json", "", "Print one JSON object: device, verdict, changed, snapshot, difference, settings, findings, messages"};

// How far a command had come when it stopped. Programs get the name of it.
enum class Stage {
  Input,    // the command line, the project, the settings
  Plan,     // the device was asked, and the change tried on a scratch device
  Prepare,  // the locks were taken and a snapshot kept; nothing is changed up to here
  Change,
  Restart  // the change is made, now or earlier, and the daemon was to be told
};
const char* NameOf(Stage stage);

// The rules that `kAccept` names.
std::set<std::string> AcceptedRules(const Arguments& arguments);

// The words of `kRestart`, cut as in a script. Throws WordError, and std::runtime_error for no words and
// for a program that is not there.
std::vector<std::string> RestartWords(const Arguments& arguments);

// Throws std::runtime_error when the command would have to ask a question that nobody could answer.
void RequireAnswer(const Arguments& arguments, Console& console);

// What else a command says about a plan, a line each.
using Remarks = std::function<std::vector<std::string>(const Plan&)>;

// What else a command asks a daemon that was probed after the change: adds it to the report.
using ProbeMore = std::function<void(ProbeReport&)>;

// Plans the change, asks for it where it has to, makes it, and prints all of that as the options say. Throws what PlanChange
// and ApplyChange throw, before anything is changed; `stage` then says how far it has come.
ExitStatus MakeChange(const Change& change, const Remarks& remarks, const Arguments& arguments, Console& console,
                      Stage& stage, const ProbeMore& probeMore = nullptr);

// Runs what may throw before anything is changed: prints the error then, and the status is Wrong. A driver that ends the
// process gives that status, too. `run` keeps the stage up to date, which begins with Input. With `kChangeJson` in the
// arguments, `printStop` prints the object for a stop: it gets the stage and the reason.
using PrintStop = std::function<void(Stage stage, const std::string& reason)>;
ExitStatus GuardStops(const Arguments& arguments, Console& console, const PrintStop& printStop,
                      const std::function<ExitStatus(Stage&)>& run);

// Prints the object of a command that changes a device and has stopped before there was a plan, for GuardStops. `name` is
// the device's.
PrintStop PrintStopOfChange(const std::string& name, Console& console);

// Messages as the reason of a stop: a driver says why it has failed before anybody else does, so all of them count.
std::string Joined(const std::vector<std::string>& messages);

// Prints an object on a line of its own. Bytes that are not UTF-8 are replaced by U+FFFD.
void PrintObject(const nlohmann::ordered_json& object, Output& out);

// Settings that differ, as lines of text.
std::string SettingLines(const std::vector<SettingChange>& settings);

}  // namespace devhost

#endif

#ifndef DEVHOST_COMMANDS_PLAYING_H
#define DEVHOST_COMMANDS_PLAYING_H

#include <memory>
#include <string>

#include "devhost/commands/Command.h"
#include "devhost/project/Project.h"
#include "devhost/report/Reporter.h"
#include "devhost/state/StateStore.h"
#include "devhost/system/Output.h"

// What the commands that play actions to the drivers of a project have in common.
namespace devhost {

inline const CommandOption kPlayedProject{
    "--project", "FILE", "Project file; without one, the agent alone is loaded as driver 1", CommandOption::Takes::Path};
inline const CommandOption kPlayedStates{
    "--state", "DIR", "Keep the drivers' states in this folder, which is made when missing", CommandOption::Takes::Folder};
inline const CommandOption kJsonLines{"--json", "",
                                      "Print one JSON object for each thing that happens, on a line of its own"};
inline const CommandOption kPretty{
    "--pretty",
    "",
    "Print XML indented, on several lines, where one line would be longer than 100 characters",
    CommandOption::Takes::Nothing,
    false,
    {},
    {"--json"}};
inline const CommandOption kColor{"--color",
                                  "WHEN",
                                  "Colour the first words: auto (on a terminal), always, never",
                                  CommandOption::Takes::Choice,
                                  false,
                                  {"auto", "always", "never"},
                                  {"--json"}};

// The project that the command line names, or the agent alone. Throws ProjectError.
Project PlayedProject(const Arguments& arguments);

// Where states live: in the folder that the command line names, or as long as the program does. Throws StateError.
std::unique_ptr<StateStore> OpenStates(const Arguments& arguments);

// Writes what happens in the form that the command line asks for. The output must outlive it.
std::unique_ptr<Reporter> MakeReporter(const Arguments& arguments, Output& output);

}  // namespace devhost

#endif

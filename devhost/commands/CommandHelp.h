#ifndef DEVHOST_COMMANDS_COMMAND_HELP_H
#define DEVHOST_COMMANDS_COMMAND_HELP_H

#include <string>

// What stands below the options in the program's help: exit statuses and an example each.
namespace devhost {

extern const char kMainFooter[];
extern const char kCheckFooter[];
extern const char kAdviseFooter[];
extern const char kPreviewFooter[];

// With the table of a script's actions.
std::string RunFooter();

}  // namespace devhost

#endif

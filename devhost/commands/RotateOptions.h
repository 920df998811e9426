#ifndef DEVHOST_COMMANDS_ROTATE_OPTIONS_H
#define DEVHOST_COMMANDS_ROTATE_OPTIONS_H

#include "devhost/commands/Command.h"
#include "devhost/operations/Rotation.h"

// The steps of a rotation as options, for one device and for many.
namespace devhost {

inline const CommandOption kRead{"--read", "FILE", "File with the new read community, - for standard input",
                                 CommandOption::Takes::Path};
inline const CommandOption kWrite{"--write", "FILE", "File with the new write community, - for standard input",
                                  CommandOption::Takes::Path};
inline const CommandOption kStatus{"--status",
                                   "",
                                   "Say whether a rotation is open and which communities work",
                                   CommandOption::Takes::Nothing,
                                   false,
                                   {},
                                   {"--read", "--write"}};
inline const CommandOption kFinish{"--finish", "", "End the rotation: the old communities go", CommandOption::Takes::Nothing,
                                   false,      {}, {"--read", "--write", "--status"}};
inline const CommandOption kAbort{"--abort",
                                  "",
                                  "Put the old communities back",
                                  CommandOption::Takes::Nothing,
                                  false,
                                  {},
                                  {"--read", "--write", "--status", "--finish"}};

// Throws std::runtime_error when the line names no step of a rotation.
void RequireStep(const Arguments& arguments);

// The communities in the files that kRead and kWrite name, "" for an option that was not given. Where both are standard
// input, it has two lines, the read community first. Throws FileError, and std::runtime_error for a text that is not one
// line with a community.
Communities ReadCommunities(const Arguments& arguments);

}  // namespace devhost

#endif

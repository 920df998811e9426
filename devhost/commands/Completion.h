#ifndef DEVHOST_COMMANDS_COMPLETION_H
#define DEVHOST_COMMANDS_COMPLETION_H

#include <string>
#include <vector>

#include "devhost/commands/Command.h"

namespace devhost {

// What a shell may offer for the last word of a command line.
struct Completion {
  enum class Paths { None, Files, Folders };

  std::vector<Candidate> candidates;  // those that begin with the word, in the order of the help
  Paths paths = Paths::None;          // whether the shell offers paths, too
};

// `words` is the command line without the program's name, up to the cursor: the last word is being written and may be empty.
// What stands behind the "=" of an option may be a word of its own, after a word "=", as bash cuts it. Throws what the
// commands throw when they read a project that a word names.
Completion Complete(const std::vector<std::string>& words, const std::vector<Command>& commands);

// The same as lines for the scripts in shells/: a candidate, a tab and its meaning; ":files" or ":folders". Whatever goes
// wrong, fewer lines are offered.
std::string CompletionLines(const std::vector<std::string>& words, const std::vector<Command>& commands);

}  // namespace devhost

#endif

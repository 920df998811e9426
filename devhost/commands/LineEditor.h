#ifndef DEVHOST_COMMANDS_LINE_EDITOR_H
#define DEVHOST_COMMANDS_LINE_EDITOR_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace devhost {

// Gives the next line without its line feed, and nothing at the end.
using LineSource = std::function<std::optional<std::string>()>;

// The words that can stand where a line ends.
using SuggestWords = std::function<std::vector<std::string>(const std::string& line)>;

// Lines that somebody types on the terminal of standard input and output: with a history, which ends with the program, since
// a line may hold a community; with completion by the tabulator key; Ctrl-C clears the line, Ctrl-D ends the input. Returns
// an empty function when the program was built without a library for that.
LineSource EditedLines(const std::string& prompt, SuggestWords suggest);

}  // namespace devhost

#endif

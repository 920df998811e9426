#ifndef DEVHOST_SCRIPT_SCRIPT_READER_H
#define DEVHOST_SCRIPT_SCRIPT_READER_H

#include <cstddef>
#include <stdexcept>
#include <string>

#include "devhost/project/DriverNames.h"
#include "devhost/report/Reporter.h"
#include "devhost/script/Script.h"

namespace devhost {

// What is wrong in a script, in one line: "FILE:LINE: what is wrong; what is allowed".
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads a script one action after the other. Only the action at hand is kept, so a script costs its text and no more, and a
// script is checked by reading it once to its end. Script and names must outlive the reader.
class ScriptReader {
 public:
  // `firstLine` is the number of the script's first line, for messages.
  ScriptReader(const Script& script, const DriverNames& names, std::size_t firstLine = 1)
      : m_script(script), m_names(names), m_line(firstLine - 1) {}

  // Reads on to the next action; false at the end of the script. Throws ScriptError for a line that is wrong, also when it
  // names a file that cannot be read.
  bool Next(Action& action);

  // The line that Next has read last.
  Where Place() const { return {m_script.name + ":" + std::to_string(m_line), m_line}; }

 private:
  const Script& m_script;
  const DriverNames& m_names;
  std::size_t m_at = 0;
  std::size_t m_line;
};

// Reads the whole script and throws the first ScriptError in it. Returns how many actions it holds.
std::size_t CheckScript(const Script& script, const DriverNames& names);

}  // namespace devhost

#endif

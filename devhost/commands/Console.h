#ifndef DEVHOST_COMMANDS_CONSOLE_H
#define DEVHOST_COMMANDS_CONSOLE_H

#include <string_view>

#include "devhost/commands/ExitStatus.h"
#include "devhost/system/Output.h"

namespace devhost {

// Where a command prints. The descriptors are borrowed.
class Console {
 public:
  Console(int out, int errors) : m_out(out), m_errors(errors) {}

  Output& Out() { return m_out; }
  Output& Errors() { return m_errors; }

  // Prints a problem as an error: "devhost: PROBLEM" on one line, since names of files and what a driver throws may hold
  // line feeds.
  void Complain(std::string_view problem);

  // The exit status of a command that has printed all: `status`, or at least Failed when the output could not be written.
  // Says so, unless the output is a pipe that its reader has closed: the reader knows.
  ExitStatus Finish(ExitStatus status);

 private:
  Output m_out;
  Output m_errors;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_CHECK_FINDING_H
#define DEVHOST_CHECK_FINDING_H

#include <cstddef>
#include <string>

namespace devhost {

enum class Severity {
  Note,     // nothing to do now: it matters only to a device that has lost its settings and reads them back
  Warning,  // surprising or risky
  Error     // the daemon or the agent will do something else than the file seems to say, or text is lost
};

// One thing that will surprise the owner of a file.
struct Finding {
  std::string file;
  std::size_t line = 0;  // counted from 1; 0 for the whole file
  Severity severity = Severity::Warning;
  std::string rule;
  std::string reason;
  std::string remedy;
};

}  // namespace devhost

#endif

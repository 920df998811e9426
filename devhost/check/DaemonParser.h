#ifndef DEVHOST_CHECK_DAEMON_PARSER_H
#define DEVHOST_CHECK_DAEMON_PARSER_H

#include <stdexcept>
#include <string>

#include "devhost/check/Report.h"

namespace devhost {

// The daemon could not be asked; the text says why, in one line.
class DaemonParserError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Has snmpd read the file as it would at its start, without serving anything, and reports each of its complaints. `path` is
// empty for a text that has no file; `name` is for messages. Throws DaemonParserError.
void AskDaemon(const std::string& path, const std::string& name, const std::string& text, Report& report);

}  // namespace devhost

#endif

#ifndef DEVHOST_REPORT_SCRIPT_OCCURRENCE_H
#define DEVHOST_REPORT_SCRIPT_OCCURRENCE_H

#include <string>
#include <vector>

#include "devhost/driver/VariableEntry.h"
#include "devhost/report/DeviceAnswers.h"
#include "devhost/text/Parameters.h"

namespace devhost {

// Something that a script did or found. It holds no secret: whoever makes one masks what it is made of.
struct ScriptOccurrence {
  enum class Kind {
    Restart,    // the host stops and starts again
    Command,    // a command goes to a driver: name, parameters, written
    Flag,       // the trap-enabled flag of a variable was set; variables: the one, with its ids and the flag
    File,       // text: a device's snmpd.conf
    Settings,   // settings: of a device
    Counts,     // counts: of a device's operations
    Daemon,     // daemon: of a device
    State,      // text: the state that a driver would keep, XML; "" for none
    Variables,  // variables: all of the project
    Run,        // a program starts; text: its words, as a script writes them
    Output,     // text: all that the program wrote
    Print,      // text: a line of the script's own
    Error,      // an action failed; text: why; call
    Expect,     // an expectation is not met; text: what is wrong; details: what was expected and found
    Done        // all that comes of the start, or of a line, of a session has been reported; good
  };
  Kind kind;
  unsigned long driverId = 0;  // of the driver concerned; 0 when driverName is empty
  std::string driverName = {};
  std::string text = {};
  std::string name = {};
  Parameters parameters = {};
  Parameters written = {};  // the parameters as the script writes them: @FILE for the text of a file
  std::vector<VariableEntry> variables = {};
  DeviceSettings settings = {};
  std::vector<OperationCount> counts = {};
  DaemonState daemon = {};
  std::vector<std::string> details = {};
  bool good = false;      // nothing went wrong in it
  std::string call = {};  // what was under way; empty when that is not known
};

}  // namespace devhost

#endif

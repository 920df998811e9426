#ifndef DEVHOST_ENGINE_OCCURRENCE_H
#define DEVHOST_ENGINE_OCCURRENCE_H

#include <string>
#include <vector>

#include "devhost/text/Parameters.h"

namespace devhost {

// Something that happened in the host.
struct Occurrence {
  enum class Kind {
    Load,          // a driver module was loaded and its driver initialised; text: the module's path
    Unload,        // a driver was destroyed and its module unloaded; text: the module's path
    Command,       // a command goes to a driver: name, parameters
    Reply,         // what the driver answered; name: of its node; text: XML; both empty when there was no node
    Notification,  // a driver told the tool something; name: of its node; text: XML
    Event,         // a system event goes out: name, parameters
    Log,           // a driver logged a line: level, text
    Invalidate,    // a driver's persisted state is out of date
    Status,        // one driver has answered another one with a status that is not 0; name: the operation; text; call
    Manners,       // a driver broke the host's rules; text: what it did; call
    Failure,       // a driver's Initialize returned something else than success, and it stays loaded; text: all of it; call
    StateProblem   // a driver's persisted state could not be read, given or kept; text: where, what and what becomes of it
  };
  Kind kind;
  unsigned long driverId = 0;  // of the driver concerned; 0 when driverName is empty
  std::string driverName;      // its name; empty when it is not known
  std::string name;
  std::string text;  // XML is compact, on one line
  unsigned int level = 0;
  Parameters parameters = {};
  // What was under way: command "X", Initialize, ... A call into another driver than this one has its title behind it: event
  // "X" of driver 12 "kitchen". Empty when nothing was.
  std::string call = {};
  // The names of the drivers of which one did it, where they share a module and nobody can tell which.
  std::vector<std::string> candidates = {};
};

// Who it was, for a line of text: the driver's name, the candidates' names with "|" between them, "" when nobody is known.
std::string DriverOf(const Occurrence& occurrence);
// What happened, for a line of text: commands and events as a script writes them, bad manners with the call.
std::string TextOf(const Occurrence& occurrence);

// Hears of everything that happens in a host, in the order in which it happens.
class HostObserver {
 public:
  virtual ~HostObserver() = default;
  // May call the host; must not wait for another thread that does. Must not throw.
  virtual void OnOccurrence(const Occurrence& occurrence) = 0;
};

}  // namespace devhost

#endif

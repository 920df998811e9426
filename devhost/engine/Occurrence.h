#ifndef DEVHOST_ENGINE_OCCURRENCE_H
#define DEVHOST_ENGINE_OCCURRENCE_H

#include <string>

namespace devhost {

// Something that happened in the host, in the order in which it happened.
struct Occurrence {
  enum class Kind {
    Load,          // a driver module was loaded and its driver initialised
    Unload,        // a driver was destroyed and its module unloaded
    Command,       // a command goes to a driver; text: name and parameters
    Reply,         // what the driver answered; text: XML
    Notification,  // a driver told the tool something; text: XML
    Event,         // a system event goes out; text: its name and parameters
    Log,           // a driver logged a line
    Invalidate,    // a driver's persisted state is out of date
    Manners,       // a driver broke the host's rules; text says what and where
    Failure,       // a driver's Initialize returned something else than success; the driver stays loaded
    StateProblem   // a driver's persisted state could not be read, given or kept; text says where, what and what becomes of
                   // it
  };
  Kind kind;
  unsigned long driverId = 0;  // the driver concerned; 0 when none is known
  std::string driverName;      // its name; empty when none is known
  std::string name;            // command, reply, notification or event name; log level for Log
  std::string text;            // see the kinds; XML is compact, on one line
};

class HostObserver {
 public:
  virtual ~HostObserver() = default;
  // May call the host; must not wait for another thread that does. Must not throw.
  virtual void OnOccurrence(const Occurrence& occurrence) = 0;
};

}  // namespace devhost

#endif

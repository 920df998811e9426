#ifndef DEVHOST_APP_HOST_H
#define DEVHOST_APP_HOST_H

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "devhost/base/VariableEntry.h"

namespace devhost {

class StateStore;

// One driver of a project, as the project file names it.
struct DriverEntry {
  unsigned long id = 0;     // unique in the project, at most 32 bits
  std::string name;         // for messages; unique in the project
  std::string module;       // path of the driver module
  std::string configXml;    // the text of its configuration element, "<config/>" when it has none
  std::string origin = {};  // where the project file names it, for messages: "FILE:LINE"; empty when that is not known
};

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

// A parameter of a command or event: name and value.
using Parameters = std::vector<std::pair<std::string, std::string>>;
// A command or event with its parameters, as a script would write it.
std::string TextOf(const std::string& name, const Parameters& parameters);

// What could not be done, in one line that says what, where and what is allowed. The host goes on working.
class HostError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One life of a development host: drivers are loaded, spoken to and unloaded. This is the facade that the program, tests,
// benchmarks and fuzzers share.
//
// Calls into drivers never overlap: a call from a second thread while one is under way is refused with HostError and
// reported as Manners; nested calls pass. A driver's exception never leaves the host uncaught: it becomes a HostError that
// names the driver, the call and the exception's text.
//
// With a store, drivers are handed what was kept for them, and asked for their state when they have called
// `DmInvalidateState`, as soon as the outermost call of this class has returned from the drivers, and before a stop.
class Host {
 public:
  // `observer` and `states` must outlive the host. One host at a time in a process. Without a store (null) no state is kept.
  explicit Host(HostObserver& observer, StateStore* states = nullptr);
  // Stops first when that has not been done; problems then are reported to the observer only.
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // Loads a module (all symbols bound, local), makes its driver, initialises it and lets it register its commands. Throws
  // HostError, with nothing left loaded, when the file is missing or no module, lacks `GetCreationFunc` or `versionString`,
  // or the driver throws while it is made.
  void Load(const DriverEntry& entry);

  // Asks the drivers for their states, destroys them in the reverse order of loading, checks what each left behind, then
  // unloads the modules. What the drivers invalidate meanwhile is not asked for any more.
  void Stop();

  // Sends a command to the driver with that id and returns the reply as compact XML ("" when the driver returned no node).
  // Throws HostError when there is no such driver, it has not registered the command, or it throws.
  std::string Command(unsigned long driverId, const std::string& name, const Parameters& parameters);
  // The same to the one driver that has registered the command. Throws HostError, naming the candidates, when none or
  // several have.
  std::string Command(const std::string& name, const Parameters& parameters);

  // Sends a system event, by its name, to the listeners of its id, in the order of registration. Throws HostError for a name
  // that no id is known for. A listener that throws does not keep the others from hearing it; the first exception is thrown
  // at the end.
  void SendEvent(const std::string& name, const Parameters& parameters);

  // Asks a driver for its state, as compact XML ("" for none). It is not kept.
  std::string GetPersistState(unsigned long driverId);

  // The variables of the project. All of these throw HostError where a variable is missing, or in the way of a new one.

  // Adds a variable without an event, as part of a project that is not loaded yet.
  void DefineVariable(const VariableEntry& entry);
  // Adds a variable and sends "OnVariableAdded" or "OnUserVariableAdded".
  void AddVariable(const VariableEntry& entry);
  // Removes a variable or user variable and sends "OnVariableRemoved". It is out of the variable manager before the event,
  // and freed after it; where a listener failed, or one of the ids is 0, which listeners take for a missing one, only
  // after the drivers are gone.
  void RemoveVariable(unsigned long deviceId, unsigned long variableId, bool user);
  // Removes an item of the project with its variables, in the same order, and sends "OnItemRemoved" alone. User variables of
  // the device stay: they belong to the project.
  void RemoveItem(unsigned long itemId, unsigned long roomId);
  // Sends "OnProjectLoaded".
  void LoadProject();
  // The flag of a variable, as a user of the project sees and sets it. No event.
  bool TrapEnabled(unsigned long deviceId, unsigned long variableId) const;
  void SetTrapEnabled(unsigned long deviceId, unsigned long variableId, bool enabled);
  // All variables, by their ids, with the flags that they have or those that they were made with.
  enum class Flags { Current, Initial };
  std::vector<VariableEntry> Variables(Flags flags) const;

  // The drivers loaded, in the order of loading.
  std::vector<DriverEntry> Drivers() const;
  // The commands that a driver has registered, in the order of registration.
  std::vector<std::string> Commands(unsigned long driverId) const;
  // How often drivers broke the rules since the host was made.
  std::size_t MannersCount() const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace devhost

#endif

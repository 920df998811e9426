#ifndef DEVHOST_ENGINE_HOST_H
#define DEVHOST_ENGINE_HOST_H

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "devhost/driver/DriverEntry.h"
#include "devhost/driver/DriverModule.h"
#include "devhost/driver/VariableEntry.h"
#include "devhost/engine/HostError.h"
#include "devhost/engine/Occurrence.h"
#include "devhost/text/Parameters.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

class StateStore;

// One life of a development host: drivers are loaded, called and unloaded. This is the facade that the program, tests,
// benchmarks and fuzzers share. One host at a time works in a process: see ModuleWatch.
//
// Calls into drivers never overlap. A call from a second thread while one is under way is refused with HostError and
// reported as Manners; nested calls pass. A driver's exception becomes a HostError that names the driver, the call and the
// exception's text. The host prints nothing: the observer hears of everything.
//
// With a store, drivers get the state that was kept for them. A driver that has called `DmInvalidateState` is asked for its
// state as soon as the outermost call of this class has returned from the drivers. All drivers are asked before a stop.
class Host {
 public:
  // How a driver of the program finds the devices of others. Agents find all devices watched.
  enum class Devices { AsPublished, Watched };

  // `observer` and `states` must outlive the host. Without a store (null) no state is kept. Throws HostError when there is a
  // host in the process.
  explicit Host(HostObserver& observer, StateStore* states = nullptr);
  // A host, without states, inside the life of another one. `around` keeps its drivers and rests until this host is gone: it
  // refuses every call with HostError, and its drivers and those of this host do not see each other. `around` outlives this
  // host. Throws HostError while a call of `around` is under way, or when it rests already.
  Host(HostObserver& observer, Host& around);
  // Destroys and unloads the drivers that a stop has left. They are not asked for their states.
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // Loads a module (all symbols bound, local), makes its driver, initialises it and lets it register its commands. Throws
  // HostError, with nothing left loaded, when the id is taken, the file is missing or is not a module, lacks
  // `GetCreationFunc` or `versionString`, or the driver throws meanwhile. A driver whose Initialize fails stays loaded.
  // With `create` the driver is part of the program: no module is loaded, and the entry's module is only a name for
  // messages. What comes out of calls of `Devices::Watched` is blamed on the device that was called, as it is for an agent.
  void Load(const DriverEntry& entry, const DriverFactory& create = nullptr, Devices devices = Devices::AsPublished);

  // Asks the drivers for their states, destroys them in the reverse order of loading, checks what each left behind, then
  // unloads the modules. States that are invalidated meanwhile are not asked for. Throws HostError from inside a call. The
  // host may be used again afterwards.
  void Stop();

  // Ends the life of one driver, as Stop does for all of them. Throws HostError when there is no such driver, and from
  // inside a call.
  void Unload(unsigned long driverId);

  // Sends a command to the driver with that id and returns the reply as compact XML ("" when the driver returned no node).
  // Throws HostError when there is no such driver, it has not registered the command, or it throws.
  std::string Command(unsigned long driverId, const std::string& name, const Parameters& parameters);
  // The same to the one driver that has registered the command. Throws HostError, naming the candidates, when none or
  // several have.
  std::string Command(const std::string& name, const Parameters& parameters);

  // The names of the commands that each driver has registered, by its own name.
  std::map<std::string, std::vector<std::string>> Commands() const;

  // From now on, agents get the file of each device as `edit` has changed it: what an agent then writes has both changes in
  // one step. The device itself knows the text that it has given. `edit` gets the id of the device's driver (0 when nobody
  // knows) and the status of its CopyFrom, and returns the one that the agent gets. Empty: no copy is changed.
  void EditCopies(std::function<int(unsigned long driverId, int status, std::string& text)> edit);

  // Sends a system event, by its name, to the listeners of its id, in the order of registration. Throws HostError for a name
  // that no id is known for. A listener that throws does not keep the others from hearing it; the first exception is thrown
  // at the end.
  void SendEvent(const std::string& name, const Parameters& parameters);

  // Asks a driver for its state, as XML in that style ("" for none). It is not kept. Throws HostError when there is no such
  // driver or it throws.
  std::string GetPersistState(unsigned long driverId, XmlStyle style);

  // The variables of the project. All of these throw HostError where a variable is missing, or in the way of a new one.

  // Adds a variable without an event, as part of a project that is not loaded yet.
  void DefineVariable(const VariableEntry& entry);
  // Adds a variable and sends "OnVariableAdded" or "OnUserVariableAdded".
  void AddVariable(const VariableEntry& entry);
  // Removes a variable or user variable and sends "OnVariableRemoved". It is out of the variable manager before the event,
  // and freed after it. Where a listener failed, or one of the ids is 0, which listeners take for a missing one, a driver
  // may still hold it, and it is freed with the host.
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
  // The commands that a driver has registered, in the order of registration. Throws HostError when there is no such driver.
  std::vector<std::string> Commands(unsigned long driverId) const;
  // The ids of the drivers that have published something under the identifier `iid`, ascending.
  std::vector<unsigned long> Publishers(const std::string& iid) const;
  // How often drivers have broken the rules since the host was made.
  std::size_t MannersCount() const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_SESSION_LIVE_HOST_H
#define DEVHOST_SESSION_LIVE_HOST_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "devhost/engine/Host.h"
#include "devhost/preview/DeviceAnswers.h"
#include "devhost/project/Project.h"
#include "devhost/report/DeviceAnswers.h"
#include "devhost/script/LearntStates.h"
#include "devhost/session/Channel.h"
#include "devhost/session/DeviceAsker.h"

namespace devhost {

// What a list says of a device.
struct DeviceGlance {
  const DriverEntry* driver = nullptr;  // of the project
  std::string version;
  bool isListed = false;  // the agent has it, and it passes its version test
  bool isManaged = false;
  bool isDirty = false;
  bool isReachable = true;  // as far as its file was asked for
  std::string problem;      // why it has not answered, or ""
};

// One host with all drivers of a project, for as long as a session lasts: what it has that a Host has not. Everything that
// happens in it becomes an event of the channel, except what this class asks on its own account.
class LiveHost : private HostObserver {
 public:
  // All arguments outlive it. One that is read-only asks no driver for its state. So the drivers know that somebody only
  // looks: one with a text that waits for its controller leaves it alone.
  LiveHost(const Project& project, StateStore& states, Masker& secrets, Channel& channel, bool isReadOnly);
  ~LiveHost() override;
  LiveHost(const LiveHost&) = delete;
  LiveHost& operator=(const LiveHost&) = delete;

  // Loads the drivers and tells them that the project is there. Throws HostError, with nothing left loaded.
  void Start();
  // Asks the drivers for their states and unloads them. Returns which states were not kept and why, a line each, with
  // secrets masked. Throws HostError.
  std::vector<std::string> Stop();

  Host& Get() { return *m_host; }
  const Project& GetProject() const { return m_project; }
  // The first agent of the project; null when it has none.
  const DriverEntry* Agent() const { return m_agent; }
  // The same for what cannot be done without one. Throws RequestError when the project has none.
  const DriverEntry& RequireAgent() const;
  // The driver of the project with that id, or null.
  const DriverEntry* Driver(unsigned long id) const;

  // The drivers that are devices, in the order of their ids. The agent reads their files first when a device has come since
  // it last did, as a configuration tool would ask it to: the devices then hold what their files have.
  std::vector<DeviceGlance> Devices();
  // The same for one of them. Throws RequestError when it is not a device.
  DeviceGlance Device(unsigned long id);
  // All that a device answers to the agent's questions. Where its file is another one than at the last time, the agent has
  // read it before the answer, so that a device which holds nothing answers with what its file has. Throws RequestError when
  // it is not a device.
  DeviceAnswers Ask(unsigned long id);
  // Why the device has not given its file when it was last asked, with secrets masked; "" when it has, and when it cannot be
  // reached and has given what it last knew.
  std::string FileProblem(unsigned long id) const;
  // Has the agent read the files of all devices now.
  void ListDevices();
  // Hears what happens while no question of this class is asked, in place of who did so far; null for nobody.
  void Listen(std::function<void(const Occurrence&)> listener) { m_listener = std::move(listener); }
  // The daemon of a device whose driver has the command for it; the address "" for others. Where a daemon was started anew
  // since it was last asked for, an event says so.
  DaemonState Daemon(unsigned long id);
  // The path of the file of a device whose driver has the command for it and whose file is on this machine; "" for others.
  std::string FilePath(unsigned long id);

 private:
  void OnOccurrence(const Occurrence& occurrence) override;
  void NoteNotification(const std::string& xml);
  void NoteReach(unsigned long id, bool isReachable);
  void NoteFile(unsigned long id, int status);
  void ListOnce();
  DeviceAnswers AskNow(unsigned long id);
  // Has the events of `action` wait until that is done: a driver may log what it answers, before anybody could learn it.
  template <class Action>
  void HoldEvents(const Action& action);
  // Asks one device, or all of them.
  template <class Question>
  void AskEach(std::optional<unsigned long> only, const Question& question);
  DeviceGlance GlanceAt(ISupportSNMP& device, const DriverEntry& driver) const;
  // Sends a driver's own command, which is neither shown nor noted. "" when it has no such command, or fails.
  std::string AskDriver(unsigned long id, const char* command);

  const Project& m_project;
  Masker& m_secrets;
  Channel& m_channel;
  LearntStates m_states;
  std::map<unsigned long, const DriverEntry*> m_drivers;
  const DriverEntry* m_agent = nullptr;
  DriverEntry m_askerEntry;
  DeviceAsker::Ask m_ask;  // what the asker does next
  std::unique_ptr<Host> m_host;
  bool m_isAsking = false;   // commands and replies are our own
  bool m_isHolding = false;  // events wait until what they may quote is learnt
  std::vector<Occurrence> m_held;
  bool m_isStopping = false;
  std::vector<std::string> m_unkept;  // states, at the stop
  std::function<void(const Occurrence&)> m_listener;
  bool m_isListed = false;                           // the agent has read the files of all devices that it has
  std::set<unsigned long> m_announced;               // to the agent
  std::set<unsigned long> m_outOfReach;              // devices whose file was asked for in vain
  std::map<unsigned long, std::string> m_files;      // as the devices have given them
  std::map<unsigned long, std::string> m_unread;     // why devices have not given theirs
  std::map<unsigned long, unsigned long> m_daemons;  // process ids
};

}  // namespace devhost

#endif

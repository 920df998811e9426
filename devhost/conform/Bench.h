#ifndef DEVHOST_CONFORM_BENCH_H
#define DEVHOST_CONFORM_BENCH_H

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "devhost/conform/AgentDouble.h"
#include "devhost/conform/Device.h"
#include "devhost/conform/Trial.h"
#include "devhost/driver/DriverModule.h"
#include "devhost/engine/Host.h"

namespace devhost {

class StateStore;

// A host with the agent double and devices of the module under test. Each device has a folder of its own below that of the
// trial.
class Bench : private HostObserver {
 public:
  // The id of the device that most checks need.
  static constexpr unsigned long kDevice = 12;

  // No agent is there yet. `trial` and `states`, where the drivers' states are kept, outlive the bench.
  explicit Bench(Trial& trial, StateStore* states = nullptr);

  // Loads a driver of the module. `config` is its configuration, "" for that of the profile. Returns why it could not be
  // loaded, or "".
  std::string TryLoad(unsigned long id = kDevice, const std::string& config = "");
  // The same. Throws Blocked where it cannot be loaded.
  void Load(unsigned long id = kDevice);
  // Loads a driver of the module that sees its host through what `wrap` makes of its instance manager. The host does not
  // know its code then. Returns why it could not be loaded, or "".
  using Wrap = std::function<IInstanceManager&(IInstanceManager&)>;
  std::string TryLoadThrough(const Wrap& wrap);
  // Calls Initialize again on the driver that TryLoadThrough has loaded, and returns its result.
  int InitializeAgain();
  // Loads the real agent, which announces and calls devices as the double does. Throws HostError where it is not there.
  void LoadAgent();
  // Sends a command to the real agent, and returns its reply.
  std::string AskAgent(const std::string& command, const Parameters& parameters);
  // Sends a command of a driver's own, as the profile gives it: "SetOnline online=false". Throws Violation where it fails.
  void SendCommand(const std::string& words, unsigned long id = kDevice);
  // The folder of that device.
  std::string FolderOf(unsigned long id) const;

  // Does something as an agent does it: inside a call of the host. All operations below but Stop call this themselves
  // unless they are called from inside of it. Throws what comes out; see AgentDouble.
  void Act(const std::function<void()>& action);
  // Throws Blocked where what is published is not a device, which cannot be called.
  void AgentArrives();
  void AgentLeaves();
  // Every pointer that is published under the identifier of devices.
  std::vector<ISupportSNMP*> Published();
  // The device for a check to call. Throws Blocked where none is published, or what is published is not a device.
  Device GetDevice();
  // GetDevice with an agent and a driver, and `action` done on it: what most checks begin with.
  void ActOnDevice(const std::function<void(Device&)>& action);

  // Called when a driver calls the agent, the log or DmInvalidateState; null for nothing.
  void SetInside(const std::function<void()>& inside);

  // Destroys the drivers.
  void Stop();

  AgentRecord& Agent() { return m_record; }
  // How often that operation was called for that device.
  std::size_t CountOf(const std::string& operation, unsigned long deviceId = kDevice) const;

  // What drivers did wrong, as the host says it: on its own thread, or on another one. There, to write a line to the log is
  // wrong, too.
  std::vector<std::string> Reports(bool onOtherThread) const;
  // What happened in the host, of one kind, as lines.
  std::vector<std::string> Lines(Occurrence::Kind kind) const;
  // The lines of the log, each with the operation that was called last before it, "" for another thread.
  std::vector<std::pair<std::string, std::string>> LogWithSlots() const;
  // The lines of the log at level 3, which operators see.
  std::vector<std::string> OperatorLines() const;
  // Drops what the operations above say, for a check that measures memory.
  void ForgetAll();

 private:
  struct Reader;

  void OnOccurrence(const Occurrence& occurrence) override;
  void Remember(const Occurrence& occurrence, bool isHere);
  // How many are published. Throws Blocked where one is not a device.
  std::size_t ExpectDevices();

  Trial& m_trial;
  AgentRecord m_record;
  mutable std::mutex m_mutex;  // of what happened, on whatever thread
  std::vector<Occurrence> m_occurrences;
  std::vector<std::string> m_reports[2];  // on the host's thread, on others
  std::vector<std::pair<std::string, std::string>> m_log;
  const std::thread::id m_thread = std::this_thread::get_id();
  AgentDouble* m_double = nullptr;
  Reader* m_reader = nullptr;
  bool m_isActing = false;
  std::function<void()> m_inside;
  std::optional<DriverModule> m_open;
  IDriver* m_openDriver = nullptr;
  Host m_host;  // last, since drivers call the others until it is gone
};

// Why what was published, and not what an agent gets in its place, is not a device of the module: a pointer to something
// else, or slots that lead elsewhere. "" when it is one.
std::string WhyNotADevice(const ISupportSNMP* published, const std::string& module);

}  // namespace devhost

#endif

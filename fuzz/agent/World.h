#ifndef FUZZ_AGENT_WORLD_H
#define FUZZ_AGENT_WORLD_H

#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "devhost/driver/LogSink.h"
#include "fuzz/support/Clock.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingDevice.h"
#include "tests/support/RecordingHost.h"

namespace fuzz {

// The exception that devices and the host throw here.
class Fault : public std::exception {
 public:
  const char* what() const noexcept override { return "fault"; }
};

// A device that returns its file even when it is off line.
class Device : public testsupport::RecordingDevice {
 public:
  using RecordingDevice::RecordingDevice;
  int CopyFrom(const std::string& path, std::string& config) override;
  // Returns everything that the device holds, as text.
  std::string Describe() const;
};

// A variable that records every call: "variable lamp.GetIds".
class Variable : public FakeVariable {
 public:
  Variable(Journal& journal, unsigned long deviceId, unsigned long variableId, std::string name);
  DualKey<unsigned long, unsigned long> GetIds() const override;
  const char* GetName() const override;
  bool& TrapEnabled() override;

 private:
  Journal& m_journal;
};

// One thing that happens to an agent or to the world around it.
struct Operation {
  enum class Kind {
    // To the world around it.
    SetText,       // device, number (which of its settings), text
    AddTrap,       // device, text, secondText, number (which port)
    SetSwitches,   // device, number (a bit each)
    SetErased,     // device, number (a bit each)
    SetStatus,     // device, number (of which operation), status
    SetFile,       // device, text
    SetList,       // flag (user variables), text
    AddVariable,   // id, secondId, flag (the variable returns other ids than its own), text
    TakeVariable,  // id, secondId
    SetDrivers,    // number (a bit for each device)
    Refuse,        // flag
    // To the agent.
    Create,
    Destroy,
    Initialize,  // text (its state; empty: no state)
    Restart,     // destroys the agent and creates it again with the state that it returned
    RegisterCommands,
    Announce,  // id, device (kNoDevice: null)
    Withdraw,  // id
    SetState,  // id
    Command,   // text (its name), parameters
    Event,     // number (its id), text (XML)
    Persist,
  };
  static constexpr std::size_t kNoDevice = 99;

  Kind kind = Kind::Persist;
  std::size_t device = 0;
  unsigned long id = 0;
  unsigned long secondId = 0;
  unsigned int number = 0;
  int status = 0;
  bool flag = false;
  std::string text;
  std::string secondText;
  RecordingHost::Parameters parameters;
};

// What happens inside one call out of the agent during an operation. `at` is the number of the call, counted from 1.
struct Plan {
  unsigned int at = 0;
  bool throws = false;
  Operation nested;  // what is done when it does not throw
};

// A driver, its host and its devices. One world with the agent and one with the reference must look exactly the same.
class World {
 public:
  using Factory = std::function<IDriver*(World&)>;
  using DescribeDriver = std::function<std::string(IDriver&, World&)>;

  static constexpr std::size_t kDevices = 4;

  World(Factory factory, DescribeDriver describe);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  // Does an operation and carries out its plans. Returns all that can be seen of it: the result, and the calls in order.
  std::string Play(const Operation& operation, const std::vector<Plan>& plans);
  // Returns, as text, what the driver, the devices and the host (for the driver) keep.
  std::string Describe();

  bool HasDriver() const { return m_driver != nullptr; }
  IInstanceManager& Instances() { return m_host.Instances(); }
  Clock& TheClock() { return m_clock; }
  // Makes `call` and returns the name of the device that it reached, "1" to "4".
  std::string NameOf(const std::function<void()>& call);

 private:
  enum class Phase { Outside, Constructing, Running, Destroying };

  void OnCall(const std::string& call);
  bool MayNest(const std::string& call) const;
  std::string Run(const Operation& operation);
  void ChangeWorld(const Operation& operation);
  std::string CallDriver(const Operation& operation);
  void Create();
  void Destroy();
  void Forget();
  void Initialize(const std::string& state);
  std::string Persist();
  std::string Command(const Operation& operation);

  Factory m_factory;
  DescribeDriver m_describe;
  Clock m_clock;
  Journal m_journal;
  std::vector<std::unique_ptr<Device>> m_devices;
  std::vector<std::unique_ptr<Variable>> m_variables;  // all stay, because the agent may still know them
  RecordingHost m_host;
  devhost::LogSink* m_log;
  std::unique_ptr<IDriver> m_driver;
  Phase m_phase = Phase::Outside;
  unsigned int m_calls = 0;
  const std::vector<Plan>* m_plans = nullptr;
  std::vector<std::string> m_seen;
};

}  // namespace fuzz

#endif

#ifndef TESTS_FAULTS_WORLD_H
#define TESTS_FAULTS_WORLD_H

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "device/SNMPDevice.h"
#include "tests/support/AgentAccess.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingDevice.h"
#include "tests/support/RecordingHost.h"

namespace faults {

// The stage of the agent's life before an operation.
enum class Stage { NoAgent, Constructed, Running };

// A variable that records its calls, "5/1.GetName", so that they can fail.
class NotedVariable : public FakeVariable {
 public:
  NotedVariable(unsigned long deviceId, unsigned long variableId, Journal& journal);
  DualKey<unsigned long, unsigned long> GetIds() const override;
  const char* GetName() const override;
  bool& TrapEnabled() override;

 private:
  void Note(const char* call) const;

  Journal& m_journal;
};

// A project with an agent. When the agent runs, its devices 5 (managed), 7 (empty settings, to be filled from its file) and
// 9 (managed) are registered; device 4 is not yet. Texts are too long to fit into a string object, so each copy allocates.
class World {
 public:
  explicit World(Stage stage);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  HostedAgent& Agent() { return *agent; }
  SNMPConfigurationAgentTestAccess State() { return SNMPConfigurationAgentTestAccess(agent->Agent()); }
  void RegisterCommands();
  // Returns what device drivers use, even while the agent is being destroyed. Throws std::logic_error when nothing is
  // published.
  ISNMPConfigurationAgent& Published();
  testsupport::RecordingDevice& Device(unsigned long id) { return *devices.at(id); }
  void Announce(unsigned long id) { Published().AddSNMPDevice(id, devices.at(id).get()); }
  // Registers exactly 5, 7 and 9, whatever was registered before.
  void AnnounceAll();
  std::vector<unsigned long> Registered();

  // Returns everything that an operation can change, as text. The time stamps in files are masked.
  std::string Description();
  // Returns what is wrong with registry and maps, whatever an operation has done, or an empty text. Call it when no
  // operation is running.
  std::string Disorder();

  Journal journal;
  std::map<unsigned long, std::unique_ptr<testsupport::RecordingDevice>> devices;
  std::vector<std::unique_ptr<NotedVariable>> variables;
  RecordingHost host{journal};
  h7::auto_com<H7XML::INode> persisted;
  std::unique_ptr<HostedAgent> agent;

  // The result of an operation.
  h7::auto_com<H7XML::INode> reply;
  int answer = 0;
  bool commandsRegistered = false;

 private:
  using RecordingDevice = testsupport::RecordingDevice;

  void MakeDevices();
  void MakeVariables();
};

}  // namespace faults

#endif

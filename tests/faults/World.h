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

// How far the agent's life has come before an operation.
enum class Stage { NoAgent, Constructed, Running };

// A variable that notes its calls, "5/1.GetName", so that they can fail.
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

// A project with an agent. Its devices 5 (managed), 7 (settings empty, to be filled from its file) and 9 (managed) are
// registered when the agent runs; 4 waits. Texts are too long to fit into a string object, so that each copy allocates.
class World {
 public:
  explicit World(Stage stage);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  HostedAgent& Agent() { return *agent; }
  SNMPConfigurationAgentTestAccess State() { return SNMPConfigurationAgentTestAccess(agent->Agent()); }
  void RegisterCommands();
  // What device drivers use, also while the agent is being destroyed. Throws std::logic_error when nothing is published.
  ISNMPConfigurationAgent& Published();
  testsupport::RecordingDevice& Device(unsigned long id) { return *devices.at(id); }
  void Announce(unsigned long id) { Published().AddSNMPDevice(id, devices.at(id).get()); }
  // Registers 5, 7 and 9, and no other, whatever is registered.
  void AnnounceAll();
  std::vector<unsigned long> Registered();

  // All that an operation can change, as text. The time stamps in files are masked.
  std::string Description();
  // What is wrong with registry and maps, whatever an operation has done or not; empty when all is well. To be asked when
  // no operation is under way.
  std::string Disorder();

  Journal journal;
  std::map<unsigned long, std::unique_ptr<testsupport::RecordingDevice>> devices;
  std::vector<std::unique_ptr<NotedVariable>> variables;
  RecordingHost host{journal};
  h7::auto_com<H7XML::INode> persisted;
  std::unique_ptr<HostedAgent> agent;

  // What an operation came to.
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

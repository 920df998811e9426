#ifndef DEVHOST_CONFORM_AGENT_DOUBLE_H
#define DEVHOST_CONFORM_AGENT_DOUBLE_H

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "host/H7BaseAgentDriver.h"

class ISupportSNMP;

namespace devhost {

class Trail;

// A call that a device has made to the agent.
struct AgentCall {
  std::string operation;  // "AddSNMPDevice", ...
  unsigned long deviceId;
  ISupportSNMP* device;  // of AddSNMPDevice, else null
  std::size_t agent;     // which agent was called: 0 for the first that came
  bool hasLeft;          // that agent was not there any more
};

// What the agent double and a check share. Outlives the host, so that a call to an agent that has left is recorded, too.
struct AgentRecord {
  // One agent that is there, or has been: every time at another address.
  class Face;

  AgentRecord();
  ~AgentRecord();

  std::vector<AgentCall> calls;
  std::function<void(const AgentCall&)> onCall;  // called when one has been recorded, from inside it
  std::function<void()> action;                  // of the command of the double
  std::exception_ptr problem;                    // that came out of it
  std::vector<std::unique_ptr<Face>> faces;
};

// Stands in for the agent, as a driver of the host, and lets a check call devices as an agent does: on the host's thread,
// inside of a call of the host. It comes and goes as often as the check wants.
class AgentDouble : public H7BaseAgentDriver {
 public:
  // Its one command: does what the record holds as `action`. What a driver throws meanwhile becomes a Violation, since the
  // driver's module may be gone before anybody looks at it.
  static constexpr char kCommand[] = "Act";

  // Both outlive the driver.
  AgentDouble(IInstanceManager& instanceManager, AgentRecord& record, const Trail& trail);
  ~AgentDouble() override;

  void RegisterCommands() override;

  // Publishes an agent, and calls AgentAvailable on every device that is published. From inside the command only.
  void Arrive();
  // Withdraws it.
  void Leave();
  // All devices that are published, in the order of the ids of their drivers.
  std::vector<ISupportSNMP*> Devices();

 private:
  void Act();

  AgentRecord& m_record;
  const Trail& m_trail;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_PREVIEW_AGENT_STAND_IN_H
#define DEVHOST_PREVIEW_AGENT_STAND_IN_H

#include <map>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/preview/DeviceAnswers.h"
#include "devhost/preview/DeviceQuestions.h"
#include "host/H7BaseAgentDriver.h"
#include "host/ICmdMessage.h"

class ISupportSNMP;

namespace devhost {

// Stands in for the agent in a host where a device must not be touched. It takes announcements as the agent does, and asks
// one device what the agent would ask. It calls no setter, no CopyTo and no action of any device: there is no such call in
// its source, and nobody else in that host knows the device until it has stepped aside.
class AgentStandIn : public H7BaseAgentDriver, private ISNMPConfigurationAgent {
 public:
  // Its commands, without parameters. The first three ask the device that is announced under `deviceId`: for everything, for
  // all but its file, for its file alone. After the last one it is not found as the agent any more, so another one can be
  // loaded; it may go on asking.
  static constexpr char kAsk[] = "AskDevice";
  static constexpr char kAskSettings[] = "AskDeviceForSettings";
  static constexpr char kAskFile[] = "AskDeviceForFile";
  static constexpr char kStepAside[] = "StepAside";

  // Each answer takes the place of the one before in `answers`, which outlives the driver.
  AgentStandIn(IInstanceManager& instanceManager, unsigned long deviceId, DeviceAnswers& answers);
  ~AgentStandIn() override;

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;
  void RegisterCommands() override;

 private:
  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override;
  void DeleteSNMPDevice(unsigned long deviceId) override;
  // Writes nothing and asks nothing, and says that it has failed.
  bool SetDeviceState(unsigned long deviceId) override;

  void Register(const char* command, Questions questions);
  h7::auto_com<H7XML::INode> OnAsk(Questions questions);
  // Null when it is not announced.
  ISupportSNMP* FindDevice();

  const unsigned long m_deviceId;
  DeviceAnswers& m_answers;
  std::map<unsigned long, ISupportSNMP*> m_devices;  // by the id of the announcement
};

}  // namespace devhost

#endif

#ifndef DEVHOST_PREVIEW_AGENT_STAND_IN_H
#define DEVHOST_PREVIEW_AGENT_STAND_IN_H

#include <map>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/preview/DeviceAnswers.h"
#include "host/H7BaseAgentDriver.h"
#include "host/ICmdMessage.h"

class ISupportSNMP;

namespace devhost {

// Stands in for the agent in a host where a device must not be touched. It takes announcements as the agent does, and its
// only command asks one device what the agent would ask. It calls no setter, no CopyTo and no action of any device: there is
// no such call in its source, and nobody else in that host knows the device.
class AgentStandIn : public H7BaseAgentDriver, private ISNMPConfigurationAgent {
 public:
  // Its one command, without parameters.
  static constexpr char kCommand[] = "AskDevice";

  // The command asks the device that is announced under `deviceId`. `answers` outlives the driver.
  AgentStandIn(IInstanceManager& instanceManager, unsigned long deviceId, DeviceAnswers& answers);
  ~AgentStandIn() override;

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;
  void RegisterCommands() override;

 private:
  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override;
  void DeleteSNMPDevice(unsigned long deviceId) override;
  // Writes nothing and asks nothing, and says that it has failed.
  bool SetDeviceState(unsigned long deviceId) override;

  h7::auto_com<H7XML::INode> OnAsk(const ICmdMessage& message);
  // Null when it is not announced.
  ISupportSNMP* FindDevice();

  const unsigned long m_deviceId;
  DeviceAnswers& m_answers;
  std::map<unsigned long, ISupportSNMP*> m_devices;  // by the id of the announcement
};

}  // namespace devhost

#endif

#ifndef DRIVERS_COMMON_AGENT_LINK_H
#define DRIVERS_COMMON_AGENT_LINK_H

class IInstanceManager;
class ISNMPConfigurationAgent;
class ISupportSNMP;

namespace drivers {

// A device's way to the agent. The agent is looked up by its published identifier for each call and never kept: it may be
// unloaded and loaded again while the device lives.
class AgentLink {
 public:
  // The manager is the device driver's own and outlives this object.
  explicit AgentLink(IInstanceManager& instanceManager);

  // Announces the device. Returns false when there is no agent. May be called again; the agent keeps the first record.
  bool Announce(unsigned long deviceId, ISupportSNMP& device);

  // Tells the agent, if there is one, that the device is gone, whether it was announced or not.
  void Withdraw(unsigned long deviceId);

  // Whether the device is announced to the agent that is there now.
  bool IsAnnounced() const;

 private:
  ISNMPConfigurationAgent* FindAgent() const;

  IInstanceManager& m_instanceManager;
  // The agent that the device was announced to. Only compared: it may be gone.
  const void* m_announcedTo;
};

}  // namespace drivers

#endif

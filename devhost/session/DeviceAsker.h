#ifndef DEVHOST_SESSION_DEVICE_ASKER_H
#define DEVHOST_SESSION_DEVICE_ASKER_H

#include <functional>
#include <string>
#include <vector>

#include "devhost/preview/DeviceAnswers.h"
#include "host/H7BaseAgentDriver.h"
#include "host/ICmdMessage.h"

class ISupportSNMP;

namespace devhost {

// A driver of ours among those of a project, which asks the devices what the agent would ask. It calls no setter, no CopyTo
// and no action, publishes nothing, and stands in nobody's place. Devices of any driver answer it, since it asks through
// ISupportSNMP.
class DeviceAsker : public H7BaseAgentDriver {
 public:
  // Its one command, without parameters.
  static constexpr char kCommand[] = "AskDevices";

  // The command gives the devices to `ask`, in the order of the ids of the drivers that have published them. `ask` outlives
  // the driver.
  using Ask = std::function<void(const std::vector<ISupportSNMP*>& devices)>;
  DeviceAsker(IInstanceManager& instanceManager, const Ask& ask);

  void RegisterCommands() override;

 private:
  h7::auto_com<H7XML::INode> OnAsk(const ICmdMessage& message);

  const Ask& m_ask;
};

}  // namespace devhost

#endif

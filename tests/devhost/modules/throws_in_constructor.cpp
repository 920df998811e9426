#include <stdexcept>

#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/ISystemEventCallback.h"
#include "host/SystemEventId.h"
#include "tests/devhost/modules/TestModule.h"

namespace {

class ThrowsInConstructor : public H7BaseAgentDriver, public ISystemEventCallback {
 public:
  explicit ThrowsInConstructor(IInstanceManager& instanceManager)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single) {
    RegisterListener(*this, SystemEvent_OnProjectLoaded, 0);
    H7XML::CreateXmlNode("Unfinished", "").Detach();
    throw std::runtime_error("not today");
  }
  void OnSystemEvent(H7XML::INode&) override {}
};

}  // namespace

TEST_MODULE(ThrowsInConstructor);

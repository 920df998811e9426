// Uses before Initialize what a driver may use only from then on, and does not call its base's Initialize.
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IInstanceManager.h"
#include "host/LogXMessage.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/TestModule.h"

namespace {

class TooEarly : public H7BaseAgentDriver {
 public:
  explicit TooEarly(IInstanceManager& instanceManager) : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single) {
    ConSendDataToUI(*H7XML::CreateXmlNode("Early", ""));
    DmInvalidateState();
    if (instanceManager.RegisterQuery("early", this)) {
      LogXMessage(3, "published");
    }
    GetUICmdDispatcher().RegisterUICmd("Early", [](ICmdMessage const&) { return h7::auto_com<H7XML::INode>(); });
  }
  int Initialize(unsigned long, H7XML::INode&, H7XML::INode*) override { return 0; }
};

}  // namespace

TEST_MODULE(TooEarly);

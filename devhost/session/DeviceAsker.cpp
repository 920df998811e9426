#include "devhost/session/DeviceAsker.h"

#include "host/H7XML.h"
#include "host/IDriverManager.h"
#include "host/ISupportSNMP.h"
#include "host/UICmdDispatcher.h"

namespace devhost {

DeviceAsker::DeviceAsker(IInstanceManager& instanceManager, const Ask& ask)
    : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single), m_ask(ask) {}

void DeviceAsker::RegisterCommands() {
  GetUICmdDispatcher().RegisterUICmd(kCommand, [this](const ICmdMessage& message) { return OnAsk(message); });
}

h7::auto_com<H7XML::INode> DeviceAsker::OnAsk(const ICmdMessage&) {
  m_ask(GetDriverManager().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID));
  return H7XML::CreateXmlNode("Asked", "");
}

}  // namespace devhost

#include <boost/bind/bind.hpp>

#include "agent/SNMPConfigurationAgent.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/UICmdDispatcher.h"

namespace {

struct Command {
  const char* name;
  h7::auto_com<H7XML::INode> (SNMPConfigurationAgent::*handler)(ICmdMessage const&);
};

const Command kCommands[] = {
    {"GetDeviceList", &SNMPConfigurationAgent::OnReqGetDeviceList},
    {"SetDeviceState", &SNMPConfigurationAgent::OnReqSetDeviceState},
    {"AddManagedDevice", &SNMPConfigurationAgent::OnReqAddManagedDevice},
    {"DeleteManagedDevice", &SNMPConfigurationAgent::OnReqDeleteManagedDevice},
    {"RebootController", &SNMPConfigurationAgent::OnReqRebootController},
    {"StopMasterAgent", &SNMPConfigurationAgent::OnReqStopMasterAgent},
    {"StartMasterAgent", &SNMPConfigurationAgent::OnReqStartMasterAgent},
};

}  // namespace

void SNMPConfigurationAgent::RegisterCommands() {
  for (const Command& command : kCommands) {
    GetUICmdDispatcher().RegisterUICmd(command.name, boost::bind(command.handler, this, boost::placeholders::_1));
  }
}

void SNMPConfigurationAgent::MySendDataToUI(std::string name, int id, int state) {
  const h7::auto_com<H7XML::INode> notification = H7XML::CreateXmlNode(name, "");
  notification->AddChildInt("id", id);
  if (state != -1) {
    notification->AddChildInt("state", state);
  }
  ConSendDataToUI(*notification);
}

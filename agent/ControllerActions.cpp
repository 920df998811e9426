#include "agent/SNMPConfigurationAgent.h"
#include "device/SNMPDevice.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::RunControllerAction(ICmdMessage const& message, ControllerAction action) {
  const unsigned long deviceId = message.GetULong("deviceId");
  h7::auto_com<H7XML::INode> reply = H7XML::CreateXmlNode("Fail", "");
  const boost::shared_ptr<SNMPDevice> device = FindDevice(m_devices, deviceId);
  if (device && (device.get()->*action)() == 0) {
    reply = H7XML::CreateXmlNode("Success", "");
  }
  return reply;
}

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::OnReqRebootController(ICmdMessage const& message) {
  return RunControllerAction(message, &SNMPDevice::RebootController);
}

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::OnReqStopMasterAgent(ICmdMessage const& message) {
  return RunControllerAction(message, &SNMPDevice::StopMasterAgent);
}

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::OnReqStartMasterAgent(ICmdMessage const& message) {
  return RunControllerAction(message, &SNMPDevice::StartMasterAgent);
}

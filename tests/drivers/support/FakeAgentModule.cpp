// A driver module that stands where the agent stands: it publishes the agent's interface, tells devices that it is there,
// and calls them on command, so that a device's module can be tested without the agent's.
//
//   List                    the devices announced, in the order of their ids: <devices><device id= name= version=
//   valid=/>... CopyFrom id             <status value="n">text</status> CopyTo id text, StartMasterAgent id, StopMasterAgent
//   id, RebootController id   <status value="n"/>
#include <map>
#include <string>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISupportSNMP.h"
#include "host/ToString.h"
#include "host/UICmdDispatcher.h"

namespace {

using Reply = h7::auto_com<H7XML::INode>;

class FakeAgentDriver final : public H7BaseAgentDriver, public ISNMPConfigurationAgent {
 public:
  explicit FakeAgentDriver(IInstanceManager& instanceManager)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single), m_path("/etc/snmp/snmpd.conf.local") {}

  // Speaks to the devices once more, as the agent does: a device that went without withdrawing is found by the sanitizer.
  ~FakeAgentDriver() override {
    for (const auto& device : m_devices) {
      device.second->SetIsManagedDevice(false);
    }
    GetInstanceManager().UnregisterQuery(ISNMPConfigurationAgent_IID);
  }

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseAgentDriver::Initialize(driverId, config, persisted);
    GetInstanceManager().RegisterQuery(ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(this));
    for (ISupportSNMP* const device : GetDriverManager().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID)) {
      device->AgentAvailable();
    }
    return 0;
  }

  void RegisterCommands() override {
    UICmdDispatcher& dispatcher = GetUICmdDispatcher();
    dispatcher.RegisterUICmd("List", [this](const ICmdMessage&) { return List(); });
    dispatcher.RegisterUICmd("CopyFrom", [this](const ICmdMessage& message) {
      std::string text;
      const int status = Device(message).CopyFrom(m_path, text);
      return Status(status, text);
    });
    dispatcher.RegisterUICmd("CopyTo", [this](const ICmdMessage& message) {
      return Status(Device(message).CopyTo(m_path, message.GetString("text")));
    });
    dispatcher.RegisterUICmd("StartMasterAgent",
                             [this](const ICmdMessage& message) { return Status(Device(message).StartMasterAgent()); });
    dispatcher.RegisterUICmd("StopMasterAgent",
                             [this](const ICmdMessage& message) { return Status(Device(message).StopMasterAgent()); });
    dispatcher.RegisterUICmd("RebootController",
                             [this](const ICmdMessage& message) { return Status(Device(message).RebootController()); });
  }

  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override { m_devices.emplace(deviceId, device); }
  void DeleteSNMPDevice(unsigned long deviceId) override { m_devices.erase(deviceId); }
  bool SetDeviceState(unsigned long) override { return false; }

  static IDriver* Create(IInstanceManager& instanceManager) { return new FakeAgentDriver(instanceManager); }

 private:
  ISupportSNMP& Device(const ICmdMessage& message) { return *m_devices.at(message.GetULong("id")); }

  Reply List() {
    const Reply list = H7XML::CreateXmlNode("devices", std::string());
    for (const auto& device : m_devices) {
      const Reply element = H7XML::CreateXmlNode("device", std::string());
      const std::string version = device.second->GetSNMPVersion();
      element->SetNamedULong("id", device.first);
      element->SetNamedString("name", device.second->GetSysNameSetting());
      element->SetNamedString("version", version);
      element->SetNamedString("valid", h7::ToString(device.second->IsSNMPVersionValid(version)));
      list->AppendChild(*element);
    }
    return list;
  }

  static Reply Status(int status, const std::string& text = std::string()) {
    const Reply reply = H7XML::CreateXmlNode("status", text);
    reply->SetNamedString("value", std::to_string(status));
    return reply;
  }

  const std::string m_path;
  std::map<unsigned long, ISupportSNMP*> m_devices;
};

}  // namespace

extern "C" {

H7_HOST_API DriverCreationFunc GetCreationFunc();
H7_HOST_API extern const char* const versionString;

DriverCreationFunc GetCreationFunc() {
  return &FakeAgentDriver::Create;
}

const char* const versionString = "1.0.0.0";

}  // extern "C"

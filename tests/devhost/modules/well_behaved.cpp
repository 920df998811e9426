// A driver that keeps all rules, with several bases, so that its interfaces have addresses of their own.
#include <boost/bind/bind.hpp>

#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISystemEventCallback.h"
#include "host/IVariableManager.h"
#include "host/LogXMessage.h"
#include "host/SystemEventId.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/Greeter.h"
#include "tests/devhost/modules/TestModule.h"

namespace {

class WellBehaved : public H7BaseAgentDriver, public Greeter, public ISystemEventCallback {
 public:
  explicit WellBehaved(IInstanceManager& instanceManager)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single), m_instances(instanceManager) {
    RegisterListener(*this, SystemEvent_OnProjectLoaded, 0);
    RegisterListener(*this, SystemEvent_OnItemRemoved, 0);
  }

  ~WellBehaved() override {
    Notify("Goodbye", "");
    m_instances.UnregisterQuery(Greeter_IID);
    UnregisterListener(*this, SystemEvent_OnProjectLoaded, 0);
    UnregisterListener(*this, SystemEvent_OnItemRemoved, 0);
  }

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseAgentDriver::Initialize(driverId, config, persisted);
    m_name = config.GetNamedString("greeting");
    m_instances.RegisterQuery(Greeter_IID, static_cast<Greeter*>(this));
    Notify("Hello", m_name);
    return static_cast<int>(config.GetNamedULong("result"));
  }

  h7::auto_com<H7XML::INode> GetPersistState(unsigned long) override { return H7XML::CreateXmlNode("State", m_name); }

  void RegisterCommands() override {
    Bind("Echo", &WellBehaved::OnEcho);
    Bind("GreetAll", &WellBehaved::OnGreetAll);
    Bind("GreetFirst", &WellBehaved::OnGreetFirst);
    Bind("Say", &WellBehaved::OnSay);
    Bind("Nothing", &WellBehaved::OnNothing);
    Bind("StopListening", &WellBehaved::OnStopListening);
    Bind("ReplaceMe", &WellBehaved::OnNothing);
    Bind("CountVariables", &WellBehaved::OnCountVariables);
  }

  std::string Greet() override { return m_name; }

  void OnSystemEvent(H7XML::INode& event) override {
    h7::auto_com<H7XML::INodeList> items = event.GetChildren();
    std::string text = event.GetNamedString("name");
    for (h7::auto_com<H7XML::INode> item = items->First(); item; item = items->Next()) {
      text += " " + item->GetNamedString("name") + ":" + item->GetValue();
    }
    event.SetNamedString("name", "spoilt");  // what one listener does to its node is no other's business
    Notify("Heard", text);
  }

 private:
  using Reply = h7::auto_com<H7XML::INode>;

  void Bind(const char* name, Reply (WellBehaved::*handler)(ICmdMessage const&)) {
    GetUICmdDispatcher().RegisterUICmd(name, boost::bind(handler, this, boost::placeholders::_1));
  }

  void Notify(const std::string& name, const std::string& text) { ConSendDataToUI(*H7XML::CreateXmlNode(name, text)); }

  Reply OnEcho(ICmdMessage const& message) {
    Reply reply = H7XML::CreateXmlNode("Echo", "");
    reply->AddChildString("text", message.GetString("text"));
    reply->AddChildString("number", std::to_string(message.GetULong("number")));
    reply->AddChildString("has", message.Has("text") ? "yes" : "no");
    return reply;
  }

  Reply OnGreetAll(ICmdMessage const&) {
    Reply reply = H7XML::CreateXmlNode("Greetings", "");
    for (Greeter* greeter : GetDriverManager().ListDrivers<Greeter>(0, Greeter_IID)) {
      reply->AddChildString("greeting", greeter->Greet());
    }
    return reply;
  }

  Reply OnGreetFirst(ICmdMessage const&) {
    return H7XML::CreateXmlNode("Greeting", static_cast<Greeter*>(m_instances.Query(Greeter_IID))->Greet());
  }

  Reply OnSay(ICmdMessage const& message) {
    LogXMessage(3, "%s says %s", m_name.c_str(), message.GetString("text").c_str());
    Notify("Said", message.GetString("text"));
    DmInvalidateState();
    return H7XML::CreateXmlNode("Success", "");
  }

  Reply OnNothing(ICmdMessage const&) { return Reply(); }

  Reply OnStopListening(ICmdMessage const&) {
    UnregisterListener(*this, SystemEvent_OnProjectLoaded, 0);
    return Reply();
  }

  Reply OnCountVariables(ICmdMessage const&) {
    std::string xml = "old";
    GetVariableManager()->ListVariables(xml, false);
    Reply reply = H7XML::CreateXmlNode("Variables", xml);
    reply->SetNamedString("found", GetVariableManager()->FindVariable(1, 1) != nullptr ? "yes" : "no");
    return reply;
  }

  IInstanceManager& m_instances;
  std::string m_name;
};

}  // namespace

TEST_MODULE(WellBehaved);

// A driver with a state to keep, which may be deaf to project loads. Its replies say what state it was given and how often
// it was asked for one. It can hold a variable.
#include <boost/bind/bind.hpp>
#include <stdexcept>
#include <string>

#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/ISystemEventCallback.h"
#include "host/IVariableManager.h"
#include "host/SystemEventId.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/TestModule.h"

namespace {

constexpr unsigned int kEvents[] = {SystemEvent_OnProjectLoaded, SystemEvent_OnItemRemoved, SystemEvent_OnVariableAdded,
                                    SystemEvent_OnVariableRemoved, SystemEvent_OnUserVariableAdded};

class Keeper : public H7BaseAgentDriver, public ISystemEventCallback {
 public:
  explicit Keeper(IInstanceManager& instanceManager) : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single) {
    for (const unsigned int event : kEvents) {
      RegisterListener(*this, event, 0);
    }
  }

  ~Keeper() override {
    for (const unsigned int event : kEvents) {
      UnregisterListener(*this, event, 0);
    }
    DmInvalidateState();  // too late to be asked
  }

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseAgentDriver::Initialize(driverId, config, persisted);
    m_began = persisted != nullptr ? persisted->GetName() + ":" + persisted->GetValue() : "nothing";
    m_text = persisted != nullptr ? persisted->GetValue() : config.GetNamedString("text");
    m_askAgain = config.GetNamedBool("askAgain");
    if (config.GetNamedBool("deaf")) {
      UnregisterListener(*this, SystemEvent_OnProjectLoaded, 0);
    }
    return 0;
  }

  h7::auto_com<H7XML::INode> GetPersistState(unsigned long) override {
    ++m_asked;
    if (m_askAgain) {
      DmInvalidateState();
    }
    if (m_text == "throw") {
      throw std::runtime_error("no state today");
    }
    return m_text.empty() ? h7::auto_com<H7XML::INode>() : H7XML::CreateXmlNode("State", m_text);
  }

  void RegisterCommands() override {
    Bind("Set", &Keeper::OnSet);
    Bind("Asked", &Keeper::OnAsked);
    Bind("Began", &Keeper::OnBegan);
    Bind("Hold", &Keeper::OnHold);
    Bind("HeldName", &Keeper::OnHeldName);
    Bind("ThrowOn", &Keeper::OnThrowOn);
  }

  void OnSystemEvent(H7XML::INode& event) override {
    const std::string name = event.GetNamedString("name");
    const h7::auto_com<H7XML::INode> heard = H7XML::CreateXmlNode("Heard", name);
    if (m_held != nullptr) {
      const DualKey<unsigned long, unsigned long> ids = m_held->GetIds();
      const bool found = GetVariableManager()->FindVariable(ids.first, ids.second) != nullptr;
      heard->SetNamedString("held", m_held->GetName());
      heard->SetNamedString("found", found ? "yes" : "no");
    }
    ConSendDataToUI(*heard);
    if (name == m_throwOn) {
      throw std::runtime_error("not " + name);
    }
  }

 private:
  using Reply = h7::auto_com<H7XML::INode>;

  void Bind(const char* name, Reply (Keeper::*handler)(ICmdMessage const&)) {
    GetUICmdDispatcher().RegisterUICmd(name, boost::bind(handler, this, boost::placeholders::_1));
  }

  // The reply says how often the state was asked for before the command ends.
  Reply OnSet(ICmdMessage const& message) {
    m_text = message.GetString("text");
    for (unsigned long i = 0; i != message.GetULong("times"); ++i) {
      DmInvalidateState();
    }
    return OnAsked(message);
  }

  Reply OnAsked(ICmdMessage const&) { return H7XML::CreateXmlNode("Asked", m_asked); }
  Reply OnBegan(ICmdMessage const&) { return H7XML::CreateXmlNode("Began", m_began); }
  Reply OnHeldName(ICmdMessage const&) { return H7XML::CreateXmlNode("Held", m_held->GetName()); }

  Reply OnHold(ICmdMessage const& message) {
    m_held = GetVariableManager()->FindVariable(message.GetULong("device"), message.GetULong("variable"));
    return Reply();
  }

  Reply OnThrowOn(ICmdMessage const& message) {
    m_throwOn = message.GetString("event");
    return Reply();
  }

  std::string m_began;
  std::string m_text;
  std::string m_throwOn;
  unsigned long m_asked = 0;
  bool m_askAgain = false;
  IVariable* m_held = nullptr;
};

}  // namespace

TEST_MODULE(Keeper);

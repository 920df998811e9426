// A driver that breaks one rule of its host for each of its commands.
#include <boost/bind/bind.hpp>
#include <cstdlib>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>

#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IInstanceManager.h"
#include "host/ISystemEventCallback.h"
#include "host/LogXMessage.h"
#include "host/SystemEventId.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/TestModule.h"

namespace {

// A type that no other module knows.
class RudeException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Rude : public H7BaseAgentDriver, public ISystemEventCallback {
 public:
  explicit Rude(IInstanceManager& instanceManager)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single), m_instances(instanceManager) {}

  ~Rude() override {
    if (m_leaveCommand) {
      Register("TooLate", [] {});
    }
  }

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseAgentDriver::Initialize(config.GetNamedBool("wrongId") ? driverId + 1 : driverId, config, persisted);
    if (config.GetNamedBool("throw")) {
      m_instances.RegisterQuery("rude.Early", this);
      throw RudeException("no start today");
    }
    return 0;
  }

  h7::auto_com<H7XML::INode> GetPersistState(unsigned long) override { throw RudeException("no state today"); }

  void RegisterCommands() override {
    Register("Throw", [] { throw RudeException("no <answer> today"); });
    Register("ThrowOddly", [] { throw 42; });
    Register("Exit", [] { std::exit(0); });
    Register("LeakNode", [] { H7XML::CreateXmlNode("Leaked", "").Detach(); });
    Register("LeakFive", [] {
      for (int i = 0; i != 5; ++i) {
        H7XML::CreateXmlNode("Leaked", "").Detach();
      }
    });
    Register("ReleaseTwice", [] {
      H7XML::INode* const node = H7XML::CreateXmlNode("Twice", "").Detach();
      node->Release();
      node->Release();
    });
    Register("UseAfterRelease", [] {
      H7XML::INode* const node = H7XML::CreateXmlNode("Gone", "").Detach();
      node->Release();
      node->SetValue("haunted");
    });
    Register("AppendToItself", [] {
      const h7::auto_com<H7XML::INode> node = H7XML::CreateXmlNode("Ring", "");
      node->AppendChild(*node);
    });
    Register("NotifyFromThread", [this] {
      const h7::auto_com<H7XML::INode> node = H7XML::CreateXmlNode("FromThread", "");
      std::thread([this, &node] { ConSendDataToUI(*node); }).join();
    });
    Register("RegisterFromThread", [this] { std::thread([this] { Register("FromThread", [] {}); }).join(); });
    Register("VariablesFromThread", [this] {
      std::thread([this] {
        if (GetVariableManager() != nullptr) {
          LogXMessage(3, "got the variables");
        }
      }).join();
    });
    Register("InvalidateFromThread", [this] { std::thread([this] { DmInvalidateState(); }).join(); });
    Register("ListenFromThread",
             [this] { std::thread([this] { RegisterListener(*this, SystemEvent_OnProjectLoaded, 0); }).join(); });
    Register("PublishFromThread",
             [this] { std::thread([this] { m_instances.RegisterQuery("rude.Thread", this); }).join(); });
    Register("LeaveListener", [this] {
      RegisterListener(*this, SystemEvent_OnProjectLoaded, 0);
      RegisterListener(*this, SystemEvent_OnVariableAdded, 0);
    });
    Register("Listen", [this] { RegisterListener(*this, SystemEvent_OnProjectLoaded, 0); });
    Register("LeaveRegistration", [this] { m_instances.RegisterQuery("rude.Left", this); });
    Register("LeaveCommand", [this] { m_leaveCommand = true; });
    Register("RegisterTwice", [this] {
      Register("Double", [] {});
      Register("Double", [] { throw RudeException("the second one"); });
    });
    Register("KeepEvent", [this] { RegisterListener(*this, SystemEvent_OnItemRemoved, 0); });
    GetUICmdDispatcher().RegisterUICmd("CallBack", boost::bind(&Rude::OnCallBack, this, boost::placeholders::_1));
  }

  void OnSystemEvent(H7XML::INode& event) override {
    if (event.GetNamedString("name") == "OnItemRemoved") {
      event.AddRef();
      UnregisterListener(*this, SystemEvent_OnItemRemoved, 0);
      return;
    }
    UnregisterListener(*this, SystemEvent_OnProjectLoaded, 0);
    throw RudeException("not listening");
  }

 private:
  using Reply = h7::auto_com<H7XML::INode>;

  void Register(const char* name, const std::function<void()>& action) {
    GetUICmdDispatcher().RegisterUICmd(name, [action](ICmdMessage const&) {
      action();
      return Reply();
    });
  }

  // Calls the test back, by the address of its std::function, in the middle of a command.
  Reply OnCallBack(ICmdMessage const& message) {
    (*reinterpret_cast<const std::function<void()>*>(std::stoull(message.GetString("function"))))();
    return Reply();
  }

  IInstanceManager& m_instances;
  bool m_leaveCommand = false;
};

}  // namespace

TEST_MODULE(Rude);

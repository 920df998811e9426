// A device with one fault, by its configuration:
//
//   <config fault="throw|throwOddly|status|crash|endThread|thread|stay|second|throwInInitialize|takes"/>
//
// It throws, returns 5, crashes, ends its thread, or calls the agent on a second thread when it is asked for its file; it is
// destroyed, or its Initialize fails, while the agent still has it; it leaves a second device with the agent, which it has
// not published; or it publishes the device that it finds. All drivers of the module share a device, which they announce and
// withdraw by the commands "Share" and "Unshare". Its reply to "Where" is the address of its Faulty.
#include <pthread.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include "agent/ISNMPConfigurationAgent.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IInstanceManager.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/Faulty.h"
#include "tests/devhost/modules/TestModule.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingDevice.h"

namespace {

// A base, because the recording device needs it from its construction on.
struct HasJournal {
  Journal journal;
};

class FaultyDevice : public H7BaseAgentDriver, private HasJournal, public testsupport::RecordingDevice, public Faulty {
 public:
  explicit FaultyDevice(IInstanceManager& instanceManager)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_PerDevice), testsupport::RecordingDevice(12, journal) {}

  ~FaultyDevice() override {
    GetInstanceManager().UnregisterQuery(ISupportSNMP_IID);
    if (m_fault != "stay" && m_fault != "throwInInitialize" && Agent() != nullptr) {
      Agent()->DeleteSNMPDevice(m_id);
    }
  }

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseAgentDriver::Initialize(driverId, config, persisted);
    m_id = driverId;
    m_fault = config.GetNamedString("fault");
    void* const found = GetInstanceManager().Query(ISupportSNMP_IID);
    GetInstanceManager().RegisterQuery(ISupportSNMP_IID, m_fault == "takes" ? found : static_cast<ISupportSNMP*>(this));
    if (Agent() != nullptr) {
      Agent()->AddSNMPDevice(m_id, this);
    }
    if (m_fault == "second") {
      Announce(m_id * 100 + 1, m_second);
    }
    if (m_fault == "throwInInitialize") {
      throw std::runtime_error("no start today");
    }
    return 0;
  }

  void RegisterCommands() override {
    GetUICmdDispatcher().RegisterUICmd("Where", [this](const ICmdMessage&) {
      return H7XML::CreateXmlNode("Where", std::to_string(reinterpret_cast<std::uintptr_t>(static_cast<Faulty*>(this))));
    });
    GetUICmdDispatcher().RegisterUICmd("Share", [this](const ICmdMessage&) {
      Agent()->AddSNMPDevice(900, &Shared());
      return H7XML::CreateXmlNode("Answer", "");
    });
    GetUICmdDispatcher().RegisterUICmd("Unshare", [this](const ICmdMessage&) {
      Agent()->DeleteSNMPDevice(900);
      return H7XML::CreateXmlNode("Answer", "");
    });
    GetUICmdDispatcher().RegisterUICmd(
        "CallAgent", [this](const ICmdMessage&) { return H7XML::CreateXmlNode("Answer", CallAgent() ? "true" : "false"); });
  }

  // One of the module, as one that is freed and another one at the same address.
  static ISupportSNMP& Shared() {
    static HasJournal journal;
    static testsupport::RecordingDevice device(900, journal.journal);
    return device;
  }

  void AgentAvailable() override { Agent()->AddSNMPDevice(m_id, this); }

  int CopyFrom(const std::string&, std::string& config) override {
    config = "sysLocation attic\n";
    if (m_fault == "throw") {
      throw std::runtime_error("no file today");
    }
    if (m_fault == "throwOddly") {
      throw 1;
    }
    if (m_fault == "crash") {
      std::abort();
    }
    if (m_fault == "endThread") {
      ::pthread_exit(nullptr);
    }
    if (m_fault == "thread") {
      std::thread([this] { CallAgent(); }).join();
    }
    return m_fault == "status" ? 5 : 0;
  }

  bool CallAgent() override { return Agent()->SetDeviceState(m_id); }
  bool Announce(unsigned long deviceId, ISupportSNMP& device) override {
    Agent()->AddSNMPDevice(deviceId, &device);
    return true;
  }
  void Notify() override { ConSendDataToUI(*H7XML::CreateXmlNode("Faulty", "")); }

 private:
  ISNMPConfigurationAgent* Agent() {
    // Asked for on the thread of the host, so that the agent is called, and not the host, on another one.
    m_agent = std::this_thread::get_id() == m_thread
                  ? static_cast<ISNMPConfigurationAgent*>(GetInstanceManager().Query(ISNMPConfigurationAgent_IID))
                  : m_agent;
    return m_agent;
  }

  testsupport::RecordingDevice m_second{0, journal};
  unsigned long m_id = 0;
  std::string m_fault;
  const std::thread::id m_thread = std::this_thread::get_id();
  ISNMPConfigurationAgent* m_agent = nullptr;
};

}  // namespace

TEST_MODULE(FaultyDevice);

// A device whose file lies in no folder that its configuration calls so, which journals every call that reaches it, and
// which announces itself and gives its file in all the ways that its configuration asks for:
//
//   <config file="PATH" journal="PATH" announce="Initialize|AgentAvailable|RegisterCommands|twice|withdrawn|otherId|never"
//           copyFrom="throw|throwOddly|exit|hang|withdraw|reenter|STATUS" learns="yes: a contact, from its file"
//           name="sysName, with its erased flag set when it is empty"
//           editedBefore="NUMBER of the CopyFrom before which somebody edits the file"/>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "agent/ISNMPConfigurationAgent.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IInstanceManager.h"
#include "host/LogXMessage.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/TestModule.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingDevice.h"

namespace {

// A base, because the recording device needs it from its construction on.
struct HasJournal {
  Journal journal;
};

class OddDevice : public H7BaseAgentDriver, private HasJournal, public testsupport::RecordingDevice {
 public:
  explicit OddDevice(IInstanceManager& instanceManager)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_PerDevice), testsupport::RecordingDevice(12, journal) {}

  ~OddDevice() override {
    GetInstanceManager().UnregisterQuery(ISupportSNMP_IID);
    Withdraw();
  }

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseAgentDriver::Initialize(driverId, config, persisted);
    m_id = driverId;
    m_file = config.GetNamedString("file");
    m_announce = config.GetNamedString("announce");
    m_copyFrom = config.GetNamedString("copyFrom");
    m_learns = !config.GetNamedString("learns").empty();
    m_editBefore = std::atoi(config.GetNamedString("editedBefore").c_str());
    const std::string path = config.GetNamedString("journal");
    journal.SetHook([path](const std::string& call) { std::ofstream(path, std::ios::app) << call << '\n'; });
    journal.Note(std::string("Initialize ") + (persisted != nullptr ? persisted->GetName() : "without a state"));
    sysName = persisted != nullptr ? persisted->GetValue() : config.GetNamedString("name");
    sysNameErased = sysName.empty();
    communityRead = "held by the driver";
    DmInvalidateState();
    GetInstanceManager().RegisterQuery(ISupportSNMP_IID, static_cast<ISupportSNMP*>(this));
    AnnounceIn("Initialize");
    AnnounceIn("twice");
    AnnounceIn("twice");
    AnnounceIn("withdrawn");
    if (m_announce == "withdrawn") {
      Withdraw();
    }
    return 0;
  }

  h7::auto_com<H7XML::INode> GetPersistState(unsigned long) override {
    journal.Note("GetPersistState");
    return H7XML::CreateXmlNode("Odd", sysName);
  }

  void RegisterCommands() override {
    for (const char* const name : {"SetOnline", "GetFilePath", "SetDeviceState"}) {
      GetUICmdDispatcher().RegisterUICmd(name, [this](const ICmdMessage&) {
        journal.Note("command");
        return H7XML::CreateXmlNode("Success", "");
      });
    }
    AnnounceIn("RegisterCommands");
  }

  void AgentAvailable() override {
    testsupport::RecordingDevice::AgentAvailable();
    AnnounceIn("AgentAvailable");
    if (m_announce == "otherId" && Agent() != nullptr) {
      Agent()->AddSNMPDevice(m_id + 1, this);
    }
  }

  int CopyFrom(const std::string& path, std::string& config) override {
    testsupport::RecordingDevice::CopyFrom(path, config);
    LogXMessage(3, "asked for the file, with %s", communityRead.c_str());
    std::ostringstream text;
    text << std::ifstream(m_file, std::ios::binary).rdbuf();
    config = text.str();
    if (--m_editBefore == 0) {
      config += "# meanwhile\n";
      std::ofstream(m_file, std::ios::binary) << config;
    }
    sysContact = m_learns ? "learnt" : sysContact;
    if (m_copyFrom == "throw") {
      throw std::runtime_error("no file today, nor held by the driver");
    }
    if (m_copyFrom == "throwOddly") {
      throw 1;
    }
    if (m_copyFrom == "exit") {
      std::exit(0);
    }
    while (m_copyFrom == "hang") {
      ::pause();
    }
    if (m_copyFrom == "withdraw") {
      Withdraw();
    }
    if (m_copyFrom == "reenter") {
      Agent()->AddSNMPDevice(m_id, this);
      journal.Note(Agent()->SetDeviceState(m_id) ? "SetDeviceState true" : "SetDeviceState false");
    }
    return std::atoi(m_copyFrom.c_str());
  }

  int CopyTo(const std::string& path, const std::string& config) override {
    testsupport::RecordingDevice::CopyTo(path, config);
    std::ofstream(m_file, std::ios::binary) << config;
    return 0;
  }

 private:
  ISNMPConfigurationAgent* Agent() {
    return static_cast<ISNMPConfigurationAgent*>(GetInstanceManager().Query(ISNMPConfigurationAgent_IID));
  }

  void AnnounceIn(const char* when) {
    if (m_announce == when && Agent() != nullptr) {
      Agent()->AddSNMPDevice(m_id, this);
    }
  }

  void Withdraw() {
    if (Agent() != nullptr) {
      Agent()->DeleteSNMPDevice(m_id);
    }
  }

  unsigned long m_id = 0;
  std::string m_file;
  std::string m_announce;
  std::string m_copyFrom;
  bool m_learns = false;
  int m_editBefore = 0;
};

}  // namespace

TEST_MODULE(OddDevice);

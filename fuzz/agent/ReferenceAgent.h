#ifndef FUZZ_AGENT_REFERENCE_AGENT_H
#define FUZZ_AGENT_REFERENCE_AGENT_H

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/xml/XmlReader.h"
#include "device/TrapTarget.h"
#include "fuzz/support/Clock.h"
#include "host/H7BaseAgentDriver.h"
#include "host/ISupportSNMP.h"
#include "host/ISystemEventCallback.h"
#include "host/IVariable.h"

class ICmdMessage;

namespace fuzz {

// A second agent that follows the rules literally: one step after the other, texts cut into tokens, at any cost. It is a
// driver like the agent, and a host or a device must see no difference between the two. It uses the host's plain values for
// XML.
class ReferenceAgent : public H7BaseAgentDriver, public ISNMPConfigurationAgent, public ISystemEventCallback {
 public:
  // Asks the clock when it writes a section.
  ReferenceAgent(IInstanceManager& instances, Clock& clock);
  ~ReferenceAgent() override;

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;
  h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved) override;
  void RegisterCommands() override;
  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override;
  void DeleteSNMPDevice(unsigned long deviceId) override;
  bool SetDeviceState(unsigned long deviceId) override;
  void OnSystemEvent(H7XML::INode& event) override;

  struct Record {
    unsigned long id;
    ISupportSNMP* device;
    std::string agentXTimeout;
    std::string agentXRetries;
    std::string config;
  };
  using RecordPointer = std::shared_ptr<Record>;
  using Key = std::pair<unsigned long, unsigned long>;
  using Variables = std::map<Key, IVariable*>;

  std::map<unsigned long, RecordPointer> devices;
  Variables deviceVariables;
  Variables userVariables;
  std::map<Key, bool> savedTrapFlags;

 private:
  using Node = h7::auto_com<H7XML::INode>;

  // The trap targets of one file, and whether the device wants them, which is unknown until the first line with one.
  struct Traps {
    std::optional<bool> wanted;
    std::vector<TrapTarget> targets;
  };

  RecordPointer Find(unsigned long deviceId) const;
  void Notify(const std::string& name, unsigned long deviceId);
  Node GetDeviceList();
  Node SetDeviceStateCommand(const std::string& xml);
  Node SetManaged(unsigned long deviceId, bool managed);
  Node Act(unsigned long deviceId, int (ISupportSNMP::*action)());
  devhost::XmlElement Settings(Record& record);
  int Read(Record& record);
  int Write(Record& record);
  void FillLine(Record& record, const std::string& line, Traps& traps);
  void BuildList(Variables& variables, bool user);
  void Add(Variables& variables, const Key& key);

  Clock& m_clock;
  IVariableManager* m_variableManager = nullptr;
  IInstanceManager* m_publishedWith = nullptr;
  bool m_initialized = false;
};

}  // namespace fuzz

#endif

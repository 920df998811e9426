#include "devhost/conform/AgentDouble.h"

#include "devhost/conform/Check.h"
#include "devhost/conform/Trial.h"
#include "host/H7XML.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISupportSNMP.h"
#include "host/UICmdDispatcher.h"

namespace devhost {

class AgentRecord::Face : public ISNMPConfigurationAgent {
 public:
  Face(AgentRecord& record, std::size_t number) : m_record(record), m_number(number) {}
  virtual ~Face() = default;

  void SetLeft() { m_hasLeft = true; }

  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override { Record("AddSNMPDevice", deviceId, device); }
  void DeleteSNMPDevice(unsigned long deviceId) override { Record("DeleteSNMPDevice", deviceId, nullptr); }
  bool SetDeviceState(unsigned long deviceId) override {
    Record("SetDeviceState", deviceId, nullptr);
    return true;
  }

 private:
  void Record(const char* operation, unsigned long deviceId, ISupportSNMP* device) {
    const AgentCall call{operation, deviceId, device, m_number, m_hasLeft};
    m_record.calls.push_back(call);
    if (m_record.onCall) {
      m_record.onCall(call);
    }
  }

  AgentRecord& m_record;
  const std::size_t m_number;
  bool m_hasLeft = false;
};

AgentRecord::AgentRecord() = default;
AgentRecord::~AgentRecord() = default;

AgentDouble::AgentDouble(IInstanceManager& instanceManager, AgentRecord& record, const Trail& trail)
    : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single), m_record(record), m_trail(trail) {}

AgentDouble::~AgentDouble() {
  Leave();
}

void AgentDouble::RegisterCommands() {
  GetUICmdDispatcher().RegisterUICmd(kCommand, [this](const ICmdMessage&) {
    Act();
    return H7XML::CreateXmlNode("Done", "");
  });
}

void AgentDouble::Act() {
  try {
    m_record.action();
  } catch (const Violation&) {
    m_record.problem = std::current_exception();
  } catch (const Blocked&) {
    m_record.problem = std::current_exception();
  } catch (const std::exception& error) {
    m_record.problem = std::make_exception_ptr(
        Violation("an exception came out of " + m_trail.Last() + ": " + error.what(), m_trail.Last()));
  } catch (...) {
    m_record.problem = std::make_exception_ptr(
        Violation("something that is not a std::exception came out of " + m_trail.Last(), m_trail.Last()));
  }
}

void AgentDouble::Arrive() {
  m_record.faces.push_back(std::make_unique<AgentRecord::Face>(m_record, m_record.faces.size()));
  ISNMPConfigurationAgent* const agent = m_record.faces.back().get();
  GetInstanceManager().RegisterQuery(ISNMPConfigurationAgent_IID, agent);
  for (ISupportSNMP* const device : Devices()) {
    device->AgentAvailable();
  }
}

void AgentDouble::Leave() {
  GetInstanceManager().UnregisterQuery(ISNMPConfigurationAgent_IID);
  if (!m_record.faces.empty()) {
    m_record.faces.back()->SetLeft();
  }
}

std::vector<ISupportSNMP*> AgentDouble::Devices() {
  return GetDriverManager().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID);
}

}  // namespace devhost

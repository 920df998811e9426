#ifndef TESTS_SUPPORT_RECORDING_HOST_H
#define TESTS_SUPPORT_RECORDING_HOST_H

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "devhost/driver/DriverServices.h"
#include "devhost/driver/LogSink.h"
#include "host/IDriver.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISupportSNMP.h"
#include "host/ISystemEventCallback.h"
#include "host/IVariable.h"
#include "host/IVariableManager.h"
#include "host/UICmdDispatcher.h"
#include "tests/support/Journal.h"

class ISNMPConfigurationAgent;
class SNMPConfigurationAgent;

// A variable of the fake project. Its calls are not recorded.
class FakeVariable : public IVariable {
 public:
  FakeVariable(unsigned long deviceId, unsigned long variableId, std::string variableName, bool trapEnabled = false)
      : ids(deviceId, variableId), name(std::move(variableName)), enabled(trapEnabled) {}
  virtual ~FakeVariable() = default;

  DualKey<unsigned long, unsigned long> GetIds() const override { return ids; }
  const char* GetName() const override { return name.c_str(); }
  bool& TrapEnabled() override { return enabled; }

  DualKey<unsigned long, unsigned long> ids;
  std::string name;
  bool enabled;
};

// A host for one driver. It records in a journal every call that the driver makes:
//   "BaseConstructed 0" (the multiplicity), "BaseInitialized 3" (the id), "BaseDestroyed",
//   "GetInstanceManager", "GetDriverManager", "GetVariableManager", "GetUICmdDispatcher",
//   "RegisterListener 34 0", "UnregisterListener 34 0" (followed by " unknown" when it was not registered),
//   "RegisterQuery IID", "UnregisterQuery IID", "Query IID", "FindDrivers 0 IID", "RegisterUICmd NAME",
//   "FindVariable 1 2", "ListVariables true" (followed by " not empty" when the passed text is not empty),
//   "ConSendDataToUI <xml/>", "DmInvalidateState", "Log 3 text".
// A call is recorded first. When the journal's hook throws, the call has no other effect, as in a host that fails. What the
// hook throws in "BaseDestroyed" and "Log" is dropped, because a host does not throw there.
class RecordingHost : private devhost::DriverServices,
                      private devhost::LogSink,
                      private IInstanceManager,
                      private IDriverManager,
                      private IVariableManager,
                      private UICmdDispatcher {
 public:
  using Handler = boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)>;
  using Parameters = std::vector<std::pair<std::string, std::string>>;
  struct Listener {
    ISystemEventCallback* callback;
    unsigned int eventId;
    unsigned long reserved;
  };

  // The journal outlives the host. While the host lives, it gets the process's log.
  explicit RecordingHost(Journal& journal);
  ~RecordingHost() override;
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  // Returns the instance manager with which a driver is created.
  IInstanceManager& Instances() { return *this; }
  IVariableManager* Variables() { return this; }

  // Returns the reply of the registered handler. Throws std::out_of_range for a command that nobody registered.
  h7::auto_com<H7XML::INode> Command(const std::string& name, const Parameters& parameters = {});
  // The same, as XML on one line.
  std::string CommandText(const std::string& name, const Parameters& parameters = {});
  void DropHandlers() { m_handlers.clear(); }

  // Delivers an event to the listeners of its id.
  void SendEvent(unsigned int eventId, H7XML::INode& event);
  // Makes the event as a host does, and delivers it under the id that belongs to its name.
  void SendEvent(const std::string& name, const Parameters& parameters = {});

  // What drivers have registered or published and not taken back.
  const std::vector<Listener>& Listeners() const { return m_listeners; }
  void* Published(const std::string& iid) const;
  bool AnythingPublished() const { return !m_published.empty(); }

  // The host's answers.
  std::vector<ISupportSNMP*> drivers;  // FindDrivers for ISupportSNMP_IID
  bool refusesRegistrations = false;   // RegisterQuery returns false, as it always does for a name that is taken
  std::map<std::pair<unsigned long, unsigned long>, IVariable*> variables;  // FindVariable
  std::string variableList = "<variables/>";                                // ListVariables(xml, false)
  std::string userVariableList = "<variables/>";                            // ListVariables(xml, true)

 private:
  void BaseConstructed(H7BaseDriver& driver, DriverMultiplicity multiplicity) override;
  void BaseInitialized(unsigned long driverId) override;
  void BaseDestroyed() noexcept override;
  IInstanceManager& GetInstanceManager() override;
  IDriverManager& GetDriverManager() override;
  IVariableManager* GetVariableManager() override;
  UICmdDispatcher& GetUICmdDispatcher() override;
  void RegisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) override;
  void UnregisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) override;
  void SendDataToUI(const H7XML::INode& data) override;
  void InvalidateState() override;

  bool RegisterQuery(const char* iid, void* instance) override;
  void UnregisterQuery(const char* iid) override;
  void* Query(const char* iid) override;
  void FindDrivers(unsigned long scope, const char* iid, std::vector<void*>& instances) override;
  IVariable* FindVariable(unsigned long deviceId, unsigned long variableId) override;
  void ListVariables(std::string& xml, bool userVariables) override;
  void RegisterUICmd(const std::string& name, Handler handler) override;
  void Log(unsigned int level, const char* line, const void* caller) noexcept override;

  Journal& m_journal;
  std::vector<Listener> m_listeners;
  std::map<std::string, void*> m_published;
  std::map<std::string, Handler> m_handlers;
  devhost::LogSink* m_formerSink;
};

// An agent as in a host: the exported factory makes it, and it is deleted through the pointer that the factory returned.
class HostedAgent {
 public:
  // The host outlives the agent.
  explicit HostedAgent(RecordingHost& host);
  ~HostedAgent() { Destroy(); }
  HostedAgent(const HostedAgent&) = delete;
  HostedAgent& operator=(const HostedAgent&) = delete;

  // Initialises the agent as driver 3 with an empty configuration. Returns the agent's result.
  int Initialize(H7XML::INode* persisted = nullptr);
  // Drops the handlers, then deletes the agent, once.
  void Destroy();

  IDriver& Driver() const { return *m_driver; }
  SNMPConfigurationAgent& Agent() const;
  SNMPConfigurationAgent* operator->() const { return &Agent(); }
  // Returns what device drivers find. Throws std::logic_error before the agent is published.
  ISNMPConfigurationAgent& Published() const;

 private:
  RecordingHost& m_host;
  std::unique_ptr<IDriver> m_driver;
};

#endif

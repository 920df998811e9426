#ifndef TESTS_DRIVERS_HOSTPROBE_SKELETON_HOST_H
#define TESTS_DRIVERS_HOSTPROBE_SKELETON_HOST_H

#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/IDriver.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISystemEventCallback.h"
#include "host/IVariableManager.h"
#include "host/UICmdDispatcher.h"

// A small host of its own, with nothing of the development host's but its reading of XML. It keeps every promise of host/
// except the one that BrokenPromise.h names.
namespace skeleton {

class Host;

class Variable final : public IVariable {
 public:
  Variable(unsigned long device, unsigned long id) : m_ids(device, id) {}
  ~Variable() = default;
  DualKey<unsigned long, unsigned long> GetIds() const override;
  const char* GetName() const override;
  bool& TrapEnabled() override;

 private:
  DualKey<unsigned long, unsigned long> m_ids;
  bool m_flag = false;
  bool m_copy = false;
};

// The host's side of one driver: all services behind its base.
class Driver final : public IInstanceManager, public IDriverManager, public IVariableManager, public UICmdDispatcher {
 public:
  using Handler = boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)>;

  Driver(Host& host, unsigned long id) : m_host(host), m_id(id) {}
  ~Driver() = default;
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  bool RegisterQuery(const char* iid, void* instance) override;
  void UnregisterQuery(const char* iid) override;
  void* Query(const char* iid) override;
  void FindDrivers(unsigned long scope, const char* iid, std::vector<void*>& instances) override;
  IVariable* FindVariable(unsigned long deviceId, unsigned long variableId) override;
  void ListVariables(std::string& xml, bool userVariables) override;
  void RegisterUICmd(const std::string& name, Handler handler) override;

  void RegisterListener(ISystemEventCallback& listener, unsigned int eventId);
  void UnregisterListener(ISystemEventCallback& listener, unsigned int eventId);
  void SendDataToUI(const H7XML::INode& data);
  void InvalidateState();

  // The life of the driver; `Stop` returns its state, or null.
  void Start(DriverCreationFunc create, const std::string& config, const H7XML::INode* persisted);
  void AskForState();
  void Destroy();
  void Command(const std::string& name, const std::map<std::string, std::string>& parameters);

  unsigned long Id() const { return m_id; }
  bool IsAlive() const { return m_driver != nullptr; }
  bool IsConstructed() const { return m_isConstructed; }
  const h7::auto_com<H7XML::INode>& State() const { return m_state; }

 private:
  void Initialize(const std::string& config, const H7XML::INode* persisted);

  Host& m_host;
  const unsigned long m_id;
  IDriver* m_driver = nullptr;
  bool m_isConstructed = false;
  bool m_isInvalid = false;
  h7::auto_com<H7XML::INode> m_state;
  std::map<std::string, Handler> m_commands;
};

class Host {
 public:
  explicit Host(const std::string& module);
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // Starts a driver of the module under that id.
  void Load(unsigned long id, const std::string& config);
  void AddVariable(unsigned long device, unsigned long id, bool user, bool withEvent);
  void Send(unsigned int eventId, const std::string& event);
  void Command(const std::string& name, const std::map<std::string, std::string>& parameters);
  // Destroys the drivers, unloads the module and keeps the states for the next life.
  void Stop();

 private:
  friend class Driver;

  struct Publication {
    std::string iid;
    const char* borrowed;  // the driver's own text, where the host should have copied it
    unsigned long driver;
    void* instance;
    bool isWithdrawn;
  };
  struct Listener {
    unsigned long driver;
    ISystemEventCallback* listener;
    unsigned int eventId;
    bool isActive;
  };
  using Key = std::pair<unsigned long, unsigned long>;

  void AskForStates();

  const std::string m_path;
  void* m_module = nullptr;
  std::vector<std::unique_ptr<Driver>> m_drivers;
  std::map<unsigned long, const H7XML::INode*> m_states;
  std::list<Publication> m_publications;
  std::vector<std::shared_ptr<Listener>> m_listeners;
  std::map<Key, std::pair<Variable, bool>> m_variables;  // and whether it is a user variable
  bool m_isSending = false;
  Driver* m_called = nullptr;  // by the host itself
};

}  // namespace skeleton

#endif

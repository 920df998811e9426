#ifndef AGENT_AUTO_QUERY_INSTANCE_REGISTERER_H
#define AGENT_AUTO_QUERY_INSTANCE_REGISTERER_H

#include <string>
#include <vector>

class IInstanceManager;

// Publishes interfaces with an instance manager and withdraws them when it is destroyed.
//
// The manager is not owned and outlives this object; so do the instances, until they are withdrawn.
class AutoQueryInstanceRegisterer {
 public:
  explicit AutoQueryInstanceRegisterer(IInstanceManager& manager);
  AutoQueryInstanceRegisterer(const AutoQueryInstanceRegisterer&) = delete;
  AutoQueryInstanceRegisterer& operator=(const AutoQueryInstanceRegisterer&) = delete;

  // Withdraws what was published, in the order of publication. A manager that throws for one identifier is still asked to
  // withdraw the others.
  ~AutoQueryInstanceRegisterer();

  // Publishes `instance`, a pointer to exactly the interface that `iid` names. Returns the manager's answer; what the
  // manager refuses is not withdrawn later.
  bool RegisterQuery(const char* iid, void* instance);

 private:
  friend struct AutoQueryInstanceRegistererTestAccess;

  IInstanceManager& m_manager;
  std::vector<std::string> m_names;
};

#endif

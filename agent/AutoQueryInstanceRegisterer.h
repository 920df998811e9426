#ifndef AGENT_AUTO_QUERY_INSTANCE_REGISTERER_H
#define AGENT_AUTO_QUERY_INSTANCE_REGISTERER_H

#include <string>
#include <vector>

class IInstanceManager;

// Publishes interfaces with an instance manager and withdraws them when it is destroyed.
//
// It owns neither the manager nor the instances. The manager outlives it; each instance lives until it is withdrawn.
class AutoQueryInstanceRegisterer {
 public:
  explicit AutoQueryInstanceRegisterer(IInstanceManager& manager);
  AutoQueryInstanceRegisterer(const AutoQueryInstanceRegisterer&) = delete;
  AutoQueryInstanceRegisterer& operator=(const AutoQueryInstanceRegisterer&) = delete;

  // Withdraws what was published, in the order of publication. When the manager throws for one identifier, the others are
  // withdrawn all the same.
  ~AutoQueryInstanceRegisterer();

  // Publishes `instance`, a pointer to exactly the interface that `iid` names. Returns the manager's answer. When the
  // manager refuses, nothing is withdrawn later.
  bool RegisterQuery(const char* iid, void* instance);

 private:
  friend struct AutoQueryInstanceRegistererTestAccess;

  IInstanceManager& m_manager;
  std::vector<std::string> m_names;
};

#endif

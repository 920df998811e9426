#ifndef TESTS_DRIVERS_SUPPORT_FAKE_AGENT_H
#define TESTS_DRIVERS_SUPPORT_FAKE_AGENT_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "host/IInstanceManager.h"

// An agent that notes what devices tell it.
class FakeAgent final : public ISNMPConfigurationAgent {
 public:
  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override {
    calls.push_back("Add " + std::to_string(deviceId));
    devices.emplace(deviceId, device);
    onCall();
  }
  void DeleteSNMPDevice(unsigned long deviceId) override {
    calls.push_back("Delete " + std::to_string(deviceId));
    devices.erase(deviceId);
    onCall();
  }
  bool SetDeviceState(unsigned long deviceId) override {
    calls.push_back("SetDeviceState " + std::to_string(deviceId));
    return false;
  }

  std::vector<std::string> calls;
  std::map<unsigned long, ISupportSNMP*> devices;
  std::function<void()> onCall = [] {};
};

// One directory of published instances, in the order of publication.
class FakeInstanceManager final : public IInstanceManager {
 public:
  bool RegisterQuery(const char* iid, void* instance) override {
    return !refuses && instances.emplace(iid, instance).second;
  }
  void UnregisterQuery(const char* iid) override { instances.erase(iid); }
  void* Query(const char* iid) override {
    const auto found = instances.find(iid);
    return found == instances.end() ? nullptr : found->second;
  }

  void Publish(FakeAgent& agent) { instances[ISNMPConfigurationAgent_IID] = static_cast<ISNMPConfigurationAgent*>(&agent); }
  void WithdrawAgent() { instances.erase(ISNMPConfigurationAgent_IID); }

  std::map<std::string, void*> instances;
  bool refuses = false;
};

#endif

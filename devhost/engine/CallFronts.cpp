#include "devhost/engine/CallFronts.h"

#include <cxxabi.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/engine/CallWatch.h"
#include "devhost/engine/EndWatch.h"
#include "device/TrapTarget.h"
#include "host/ISupportSNMP.h"

namespace devhost {
namespace {

template <class Action>
auto PassOn(CallWatch& watch, const void* instance, const char* operation, Action action) {
  WatchedCall call(watch, instance, operation);
  try {
    if constexpr (std::is_same_v<decltype(action()), int>) {
      const int status = action();
      call.NoteStatus(status);
      return status;
    } else {
      return action();
    }
  } catch (const abi::__forced_unwind&) {
    EndWatch::OnEndOfThread();
  } catch (...) {
    call.NoteException();
    throw;
  }
}

class DeviceFront final : public ISupportSNMP {
 public:
  DeviceFront(CallWatch& watch, ISupportSNMP& device) : m_watch(watch), m_device(device) {}

// A driver may have published something else than a device. What it does is its own, as when the agent calls it.
#define OPERATION(RESULT, NAME, PARAMETERS, ARGUMENTS)             \
  RESULT NAME PARAMETERS override {                                \
    const auto call = [&]() __attribute__((no_sanitize("vptr"))) { \
      return m_device.NAME ARGUMENTS;                              \
    };                                                             \
    return PassOn(m_watch, &m_device, #NAME, call);                \
  }
#define GETTER(RESULT, NAME) OPERATION(RESULT, NAME, (), ())
#define SETTER(TYPE, NAME) OPERATION(void, NAME, (TYPE value), (std::move(value)))
#define SWITCH(NAME)      \
  GETTER(bool, Get##NAME) \
  OPERATION(void, Set##NAME, (bool value), (value))
#define ERASABLE(TYPE, NAME)       \
  GETTER(TYPE, Get##NAME##Setting) \
  SETTER(TYPE, Set##NAME##Setting) \
  GETTER(bool, GetWas##NAME##SettingErased)

  SWITCH(IsManagedDevice)
  SWITCH(IsConfigDirty)
  SWITCH(EnabledSetting)
  ERASABLE(std::string, CommunityRead)
  ERASABLE(std::string, CommunityWrite)
  ERASABLE(std::string, SysContact)
  SWITCH(UsePrimaryContactSetting)
  ERASABLE(std::string, SysLocation)
  SWITCH(UseProjectOwnerAddressSetting)
  ERASABLE(std::string, SysName)
  SWITCH(UseRoomDeviceSetting)
  ERASABLE(std::vector<TrapTarget>, TrapTargets)
  OPERATION(void, ClearTrapTargetSetting, (), ())
  OPERATION(void, AddTrapTargetSetting, (std::string target, std::string community, std::string port),
            (std::move(target), std::move(community), std::move(port)))
  OPERATION(void, AgentAvailable, (), ())
  int CopyFrom(const std::string& path, std::string& config) override {
    const auto call = [&]() __attribute__((no_sanitize("vptr"))) {
      return m_device.CopyFrom(path, config);
    };
    const int status = PassOn(m_watch, &m_device, "CopyFrom", call);
    return m_watch.editCopies ? m_watch.editCopies(m_watch.OwnersId(&m_device), status, config) : status;
  }
  OPERATION(int, CopyTo, (const std::string& path, const std::string& config), (path, config))
  OPERATION(int, RebootController, (), ())
  OPERATION(int, StopMasterAgent, (), ())
  OPERATION(int, StartMasterAgent, (), ())
  GETTER(std::string, GetSNMPVersion)
  OPERATION(bool, IsSNMPVersionValid, (const std::string& version), (version))

#undef ERASABLE
#undef SWITCH
#undef SETTER
#undef GETTER
#undef OPERATION

 private:
  CallWatch& m_watch;
  ISupportSNMP& m_device;
};

class AgentFront final : public ISNMPConfigurationAgent {
 public:
  AgentFront(CallWatch& watch, ISNMPConfigurationAgent& agent) : m_watch(watch), m_agent(agent) {}

  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override {
    const void* const caller = __builtin_return_address(0);
    if (m_watch.Allows(m_agent, "AddSNMPDevice", deviceId, caller)) {
      // Before the call, because the agent may have taken the device in and throw after that.
      ISupportSNMP* const front = m_watch.NoteAnnounced(m_agent, deviceId, device, caller);
      PassOn(m_watch, &m_agent, "AddSNMPDevice", [&] { m_agent.AddSNMPDevice(deviceId, front); });
    }
  }

  void DeleteSNMPDevice(unsigned long deviceId) override {
    if (m_watch.Allows(m_agent, "DeleteSNMPDevice", deviceId, __builtin_return_address(0))) {
      m_watch.NoteWithdrawn(m_agent, deviceId);
      PassOn(m_watch, &m_agent, "DeleteSNMPDevice", [&] { m_agent.DeleteSNMPDevice(deviceId); });
    }
  }

  bool SetDeviceState(unsigned long deviceId) override {
    return m_watch.Allows(m_agent, "SetDeviceState", deviceId, __builtin_return_address(0)) &&
           PassOn(m_watch, &m_agent, "SetDeviceState", [&] { return m_agent.SetDeviceState(deviceId); });
  }

 private:
  CallWatch& m_watch;
  ISNMPConfigurationAgent& m_agent;
};

}  // namespace

std::shared_ptr<ISupportSNMP> MakeDeviceFront(CallWatch& watch, ISupportSNMP& device) {
  return std::make_shared<DeviceFront>(watch, device);
}

std::shared_ptr<ISNMPConfigurationAgent> MakeAgentFront(CallWatch& watch, ISNMPConfigurationAgent& agent) {
  return std::make_shared<AgentFront>(watch, agent);
}

}  // namespace devhost

// Functions that stand in a table of virtual functions, in the place of a driver's own. Each has the arguments of its
// operation, with the object first, as the binary interface passes them.
#include "devhost/engine/CallFronts.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/engine/CallWatch.h"
#include "devhost/engine/SlotTable.h"
#include "device/TrapTarget.h"
#include "host/ISupportSNMP.h"

namespace devhost {
namespace {

// Calls the function of the driver, which takes the object first. Not through a pointer to a member function, whose lowest
// bit has a meaning: what stands in a table may lie at an odd address. A sanitizer that compares types of functions is in
// the way.
template <class Result, class Interface, class... Arguments>
__attribute__((no_sanitize("undefined"))) Result CallBehind(std::size_t slot, Interface* object, Arguments... arguments) {
  const void* const address = FunctionBehind(object, slot);
  Result (*function)(Interface*, Arguments...) = nullptr;
  static_assert(sizeof function == sizeof address, "object and function pointers have one size here");
  std::memcpy(&function, &address, sizeof address);
  return function(object, std::forward<Arguments>(arguments)...);
}

template <class Pointer>
const void* AddressOf(Pointer function) {
  const void* address = nullptr;
  static_assert(sizeof function == sizeof address, "object and function pointers have one size here");
  std::memcpy(&address, &function, sizeof address);
  return address;
}

#define OPERATIONS_OF_A_DEVICE(OPERATION)      \
  OPERATION(GetIsManagedDevice)                \
  OPERATION(SetIsManagedDevice)                \
  OPERATION(GetIsConfigDirty)                  \
  OPERATION(SetIsConfigDirty)                  \
  OPERATION(GetEnabledSetting)                 \
  OPERATION(SetEnabledSetting)                 \
  OPERATION(GetCommunityReadSetting)           \
  OPERATION(SetCommunityReadSetting)           \
  OPERATION(GetWasCommunityReadSettingErased)  \
  OPERATION(GetCommunityWriteSetting)          \
  OPERATION(SetCommunityWriteSetting)          \
  OPERATION(GetWasCommunityWriteSettingErased) \
  OPERATION(GetSysContactSetting)              \
  OPERATION(SetSysContactSetting)              \
  OPERATION(GetWasSysContactSettingErased)     \
  OPERATION(GetUsePrimaryContactSetting)       \
  OPERATION(SetUsePrimaryContactSetting)       \
  OPERATION(GetSysLocationSetting)             \
  OPERATION(SetSysLocationSetting)             \
  OPERATION(GetWasSysLocationSettingErased)    \
  OPERATION(GetUseProjectOwnerAddressSetting)  \
  OPERATION(SetUseProjectOwnerAddressSetting)  \
  OPERATION(GetSysNameSetting)                 \
  OPERATION(SetSysNameSetting)                 \
  OPERATION(GetWasSysNameSettingErased)        \
  OPERATION(GetUseRoomDeviceSetting)           \
  OPERATION(SetUseRoomDeviceSetting)           \
  OPERATION(GetTrapTargetsSetting)             \
  OPERATION(SetTrapTargetsSetting)             \
  OPERATION(ClearTrapTargetSetting)            \
  OPERATION(AddTrapTargetSetting)              \
  OPERATION(GetWasTrapTargetsSettingErased)    \
  OPERATION(AgentAvailable)                    \
  OPERATION(CopyFrom)                          \
  OPERATION(CopyTo)                            \
  OPERATION(RebootController)                  \
  OPERATION(StopMasterAgent)                   \
  OPERATION(StartMasterAgent)                  \
  OPERATION(GetSNMPVersion)                    \
  OPERATION(IsSNMPVersionValid)

enum DeviceSlot : std::size_t {
#define OPERATION(NAME) Slot##NAME,
  OPERATIONS_OF_A_DEVICE(OPERATION)
#undef OPERATION
      DeviceSlotCount
};

constexpr const char* kDeviceOperations[] = {
#define OPERATION(NAME) #NAME,
    OPERATIONS_OF_A_DEVICE(OPERATION)
#undef OPERATION
};

// Texts and lists that come by value are moved on.
template <std::size_t Slot, class Result, class... Arguments>
Result CallDevice(ISupportSNMP* device, Arguments... arguments) {
  WatchedCall call(device, kDeviceOperations[Slot]);
  try {
    if constexpr (std::is_same_v<Result, int>) {
      const int status = CallBehind<Result, ISupportSNMP, Arguments...>(Slot, device, std::forward<Arguments>(arguments)...);
      call.NoteStatus(status);
      return status;
    } else {
      return CallBehind<Result, ISupportSNMP, Arguments...>(Slot, device, std::forward<Arguments>(arguments)...);
    }
  } catch (...) {
    call.NoteException();
    throw;
  }
}

template <std::size_t Slot, class Result, class... Arguments>
const void* FrontOf(Result (ISupportSNMP::*)(Arguments...)) {
  return AddressOf(&CallDevice<Slot, Result, Arguments...>);
}

template <class Action>
auto WatchAgentCall(const ISNMPConfigurationAgent* agent, const char* operation, Action action) {
  WatchedCall call(agent, operation);
  try {
    return action();
  } catch (...) {
    call.NoteException();
    throw;
  }
}

bool Allows(ISNMPConfigurationAgent* agent, const char* operation, unsigned long deviceId, const void* caller) {
  CallWatch* const watch = CallWatch::Current();
  return watch == nullptr || watch->Allows(*agent, operation, deviceId, caller);
}

void AddSNMPDevice(ISNMPConfigurationAgent* agent, unsigned long deviceId, ISupportSNMP* device) {
  if (!Allows(agent, "AddSNMPDevice", deviceId, __builtin_return_address(0))) {
    return;
  }
  // Before the call, because the agent may have taken the device in and throw after that.
  if (CallWatch::Current() != nullptr) {
    CallWatch::Current()->NoteAnnounced(*agent, deviceId, device, __builtin_return_address(0));
  }
  WatchAgentCall(agent, "AddSNMPDevice", [&] { CallBehind<void>(0, agent, deviceId, device); });
}

void DeleteSNMPDevice(ISNMPConfigurationAgent* agent, unsigned long deviceId) {
  if (!Allows(agent, "DeleteSNMPDevice", deviceId, __builtin_return_address(0))) {
    return;
  }
  if (CallWatch::Current() != nullptr) {
    CallWatch::Current()->NoteWithdrawn(*agent, deviceId);
  }
  WatchAgentCall(agent, "DeleteSNMPDevice", [&] { CallBehind<void>(1, agent, deviceId); });
}

bool SetDeviceState(ISNMPConfigurationAgent* agent, unsigned long deviceId) {
  if (!Allows(agent, "SetDeviceState", deviceId, __builtin_return_address(0))) {
    return false;
  }
  return WatchAgentCall(agent, "SetDeviceState", [&] { return CallBehind<bool>(2, agent, deviceId); });
}

}  // namespace

bool WatchDevice(ISupportSNMP& device) {
  static const std::array<const void*, DeviceSlotCount> kFronts = {
#define OPERATION(NAME) FrontOf<Slot##NAME>(&ISupportSNMP::NAME),
      OPERATIONS_OF_A_DEVICE(OPERATION)
#undef OPERATION
  };
  return PutInFront(&device, typeid(ISupportSNMP), kFronts.data(), kFronts.size());
}

bool WatchAgent(ISNMPConfigurationAgent& agent) {
  static const std::array<const void*, 3> kFronts = {AddressOf(&AddSNMPDevice), AddressOf(&DeleteSNMPDevice),
                                                     AddressOf(&SetDeviceState)};
  return PutInFront(&agent, typeid(ISNMPConfigurationAgent), kFronts.data(), kFronts.size());
}

}  // namespace devhost

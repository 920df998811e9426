#include "devhost/conform/Device.h"

namespace devhost {

namespace {

// What the agent calls the file; see config/ManagedSection.h.
constexpr char kWorkingPath[] = "/etc/snmp/snmpd.conf.local";

using D = ISupportSNMP;

Setting MakeSwitch(const std::string& name, bool (D::*getter)(), void (D::*setter)(bool)) {
  return {name,
          Setting::Kind::Switch,
          "Set" + name,
          [=](Device& device) { return device.Call("Get" + name, getter) ? std::string("true") : std::string("false"); },
          [=](Device& device, const std::string& value) { device.Call("Set" + name, setter, value == "true"); },
          nullptr,
          ""};
}

Setting MakeText(const std::string& name, std::string (D::*getter)(), void (D::*setter)(std::string), bool (D::*erased)(),
                 const std::string& ownSwitch = "") {
  return {name,
          Setting::Kind::Text,
          "Set" + name + "Setting",
          [=](Device& device) { return device.Call("Get" + name + "Setting", getter); },
          [=](Device& device, const std::string& value) { device.Call("Set" + name + "Setting", setter, value); },
          [=](Device& device) { return device.Call("GetWas" + name + "SettingErased", erased); },
          ownSwitch};
}

Setting MakeList() {
  return {"TrapTargets",
          Setting::Kind::List,
          "SetTrapTargetsSetting",
          [](Device& device) { return TextOf(device.Traps()); },
          [](Device& device, const std::string& value) {
            device.SetTraps(value.empty() ? std::vector<TrapTarget>() : std::vector<TrapTarget>{{value, "c", "162"}});
          },
          [](Device& device) { return device.Call("GetWasTrapTargetsSettingErased", &D::GetWasTrapTargetsSettingErased); },
          ""};
}

}  // namespace

int Device::CopyFrom(std::string& text) {
  return Call("CopyFrom", &D::CopyFrom, kWorkingPath, text);
}

int Device::CopyTo(const std::string& text) {
  return Call("CopyTo", &D::CopyTo, kWorkingPath, text);
}

int Device::TryCopyTo(const std::string& text) {
  try {
    return CopyTo(text);
  } catch (...) {
    return -1;
  }
}

const std::vector<Setting>& Settings() {
  static const std::vector<Setting> settings = {
      MakeSwitch("IsManagedDevice", &D::GetIsManagedDevice, &D::SetIsManagedDevice),
      MakeSwitch("IsConfigDirty", &D::GetIsConfigDirty, &D::SetIsConfigDirty),
      MakeSwitch("EnabledSetting", &D::GetEnabledSetting, &D::SetEnabledSetting),
      MakeText("CommunityRead", &D::GetCommunityReadSetting, &D::SetCommunityReadSetting,
               &D::GetWasCommunityReadSettingErased),
      MakeText("CommunityWrite", &D::GetCommunityWriteSetting, &D::SetCommunityWriteSetting,
               &D::GetWasCommunityWriteSettingErased),
      MakeText("SysContact", &D::GetSysContactSetting, &D::SetSysContactSetting, &D::GetWasSysContactSettingErased,
               "UsePrimaryContactSetting"),
      MakeSwitch("UsePrimaryContactSetting", &D::GetUsePrimaryContactSetting, &D::SetUsePrimaryContactSetting),
      MakeText("SysLocation", &D::GetSysLocationSetting, &D::SetSysLocationSetting, &D::GetWasSysLocationSettingErased,
               "UseProjectOwnerAddressSetting"),
      MakeSwitch("UseProjectOwnerAddressSetting", &D::GetUseProjectOwnerAddressSetting,
                 &D::SetUseProjectOwnerAddressSetting),
      MakeText("SysName", &D::GetSysNameSetting, &D::SetSysNameSetting, &D::GetWasSysNameSettingErased,
               "UseRoomDeviceSetting"),
      MakeSwitch("UseRoomDeviceSetting", &D::GetUseRoomDeviceSetting, &D::SetUseRoomDeviceSetting),
      MakeList(),
  };
  return settings;
}

const std::vector<std::function<void(Device&)>>& Operations() {
  static const std::vector<std::function<void(Device&)>> operations = [] {
    std::vector<std::function<void(Device&)>> all;
    for (const Setting& setting : Settings()) {
      all.emplace_back([&setting](Device& device) {
        const std::string value = setting.get(device);
        setting.set(device, setting.kind == Setting::Kind::List ? "192.0.2.1" : value);
        if (setting.wasErased) {
          setting.wasErased(device);
        }
      });
    }
    all.emplace_back([](Device& device) { device.ClearTraps(); });
    all.emplace_back([](Device& device) { device.AddTrap({"192.0.2.1", "c", "162"}); });
    all.emplace_back([](Device& device) { device.AgentAvailable(); });
    all.emplace_back([](Device& device) {
      std::string text;
      device.CopyFrom(text);
      device.CopyTo(text);
    });
    all.emplace_back([](Device& device) {
      const std::string version = device.Call("GetSNMPVersion", &D::GetSNMPVersion);
      device.Call("IsSNMPVersionValid", &D::IsSNMPVersionValid, version);
    });
    return all;
  }();
  return operations;
}

void CallAll(Device& device) {
  for (const std::function<void(Device&)>& operation : Operations()) {
    operation(device);
  }
}

std::string GiveAFile(Device& device) {
  try {
    // As the agent: it copies the file out before it copies one in.
    std::string found;
    device.CopyFrom(found);
    const int status = device.CopyTo(kOrdinaryText);
    if (status != 0) {
      return "CopyTo returned " + std::to_string(status) + " for an ordinary text";
    }
    found = "nothing was copied out";
    const bool isThere = device.CopyFrom(found) == 0 && found == kOrdinaryText;
    return isThere ? "" : "CopyFrom does not give what CopyTo has installed";
  } catch (...) {
    return "an exception came out of CopyFrom or CopyTo";
  }
}

std::string TextOf(const std::vector<TrapTarget>& targets) {
  std::string text;
  for (const TrapTarget& target : targets) {
    text.append(target.target).append("|").append(target.community).append("|").append(target.port).append("\n");
  }
  return text;
}

}  // namespace devhost

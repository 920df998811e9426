#ifndef DRIVERS_COMMON_DEVICE_COMMANDS_H
#define DRIVERS_COMMON_DEVICE_COMMANDS_H

#include <functional>
#include <string>

#include "drivers/common/DeviceOperations.h"
#include "drivers/common/SnmpSettings.h"
#include "host/ICmdMessage.h"
#include "host/INode.h"
#include "host/UICmdDispatcher.h"
#include "host/auto_com.h"

namespace drivers {

// The commands with which scripts act as the world around a device: the person at its front panel, the failing network.
//
//   Announce, Withdraw                        to and from the agent
//   SetSetting name value, EraseSetting name  by the names of drivers/common/SettingNames.h
//   AddTrapTarget target community port, ClearTrapTargets
//   FailOperation operation status [times]    status 0 ends it; without times, until the next one
//   GetSettings, GetFilePath, GetCounts
//
// The reply is <Success/>, the requested element, or <Fail>what is wrong and what is allowed</Fail>; a command that fails
// changes nothing.
class DeviceCommands {
 public:
  // What a command can ask of the driver besides settings and operations.
  struct Driver {
    std::function<std::string()> announce;  // returns why it is impossible, or nothing when it was done
    std::function<void()> withdraw;
    std::function<std::string()> filePath;
    std::function<void()> settingsChanged = [] {};  // a command has changed a setting, perhaps to what it was
  };

  // All that is passed in outlives this object; the dispatcher drops the handlers before.
  DeviceCommands(SnmpSettings& settings, DeviceOperations& operations, Driver driver);

  // Binds all commands above.
  void Register(UICmdDispatcher& dispatcher);

 private:
  using Reply = h7::auto_com<H7XML::INode>;

  // Answers a command that sets something, and notifies the driver if it was done.
  Reply AnswerChange(const std::string& wrong);

  Reply OnSetSetting(const ICmdMessage& message);
  Reply OnEraseSetting(const ICmdMessage& message);
  Reply OnAddTrapTarget(const ICmdMessage& message);
  Reply OnFailOperation(const ICmdMessage& message);
  Reply OnGetSettings();
  Reply OnGetCounts();

  SnmpSettings& m_settings;
  DeviceOperations& m_operations;
  Driver m_driver;
};

}  // namespace drivers

#endif

#ifndef DRIVERS_SSHSNMPD_SSH_SNMPD_DEVICE_H
#define DRIVERS_SSHSNMPD_SSH_SNMPD_DEVICE_H

#include <optional>
#include <string>

#include "drivers/common/KeepingDeviceDriver.h"
#include "drivers/sshsnmpd/Controller.h"
#include "drivers/sshsnmpd/SshConfiguration.h"

class IInstanceManager;

namespace drivers {

// An SNMP-capable device whose controller is another machine, reached over SSH. Statuses are those of
// drivers/sshsnmpd/SshStatus.h.
//
// A file that somebody changed since it was copied out is never overwritten. While the controller cannot be reached, the
// last known text is handed out, and a new one is accepted for later. Each operation tries to reach the controller. A start,
// a reboot and Connect install what waits, and a new text takes its place; reading the file installs it only in a life that
// does more than look. A restart that has failed stays due until the next text, start or Connect makes up for it. Settings,
// texts and that mark survive the host.
class SshSnmpdDevice final : public KeepingDeviceDriver {
 public:
  explicit SshSnmpdDevice(IInstanceManager& instanceManager);
  ~SshSnmpdDevice() override;

  static IDriver* Create(IInstanceManager& instanceManager);

  void RegisterCommands() override;

 private:
  using Reply = h7::auto_com<H7XML::INode>;

  std::string Prepare(const DeviceConfiguration& configuration, const H7XML::INode& config) override;
  bool NeedsFolder() const override { return false; }
  // Empty: the file is not on this machine.
  std::string FilePath() const override;
  int ReadFile(std::string& config) override;
  int WriteFile(const std::string& config) override;
  int Reboot() override;
  int StopDaemon() override;
  int StartDaemon() override;
  std::string DescribeStatus(int status) const override;

  Replace Replacer();
  int CatchUp();
  int RestartDaemon();
  int RunCommand(const std::string& action, const Words& words);
  int ReportFile(const std::string& action, int status) const;
  Reply OnGetController(const ICmdMessage& message);
  Reply OnConnect(const ICmdMessage& message);
  Reply OnGetHostKey(const ICmdMessage& message);
  Reply OnTrustHostKey(const ICmdMessage& message);

  SshConfiguration m_configuration;
  std::optional<Controller> m_controller;
};

}  // namespace drivers

#endif

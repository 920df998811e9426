#ifndef DRIVERS_LOCALSNMPD_LOCAL_SNMPD_DEVICE_H
#define DRIVERS_LOCALSNMPD_LOCAL_SNMPD_DEVICE_H

#include <chrono>
#include <optional>
#include <string>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/KeepingDeviceDriver.h"
#include "drivers/localsnmpd/Daemon.h"
#include "drivers/localsnmpd/PortReservation.h"

class IInstanceManager;

namespace drivers {

// An SNMP-capable device whose controller is this machine: one folder with its snmpd.conf, and one SNMP daemon that serves
// it on a port of 127.0.0.1. Statuses are those of drivers/localsnmpd/DaemonStatus.h.
//
// A file that somebody changed since it was copied out is never overwritten. Tests can switch the controller off line: then
// the last known text is handed out, and a new one is accepted for later and installed when the controller is back.
//
// Settings and those texts survive the host. The daemon ends with the driver.
class LocalSnmpdDevice final : public KeepingDeviceDriver {
 public:
  explicit LocalSnmpdDevice(IInstanceManager& instanceManager);
  ~LocalSnmpdDevice() override;

  static IDriver* Create(IInstanceManager& instanceManager);

  void RegisterCommands() override;

 private:
  using Reply = h7::auto_com<H7XML::INode>;

  std::string Prepare(const DeviceConfiguration& configuration, const H7XML::INode& config) override;
  std::string FilePath() const override;
  int ReadFile(std::string& config) override;
  int WriteFile(const std::string& config) override;
  int Reboot() override;
  int StopDaemon() override;
  int StartDaemon() override;
  std::string DescribeStatus(int status) const override;

  Replace Replacer() const;
  int StartOnLine();
  int ApplyToDaemon(const std::string& config);
  std::string ComeOnLine();
  int ReportFile(const std::string& action, int status) const;
  Reply OnSetOnline(const ICmdMessage& message);
  Reply OnGetDaemon(const ICmdMessage& message);

  std::optional<PortReservation> m_port;  // none for a configured port
  std::chrono::milliseconds m_rebootPause{0};
  std::optional<ConfigFile> m_file;
  std::optional<Daemon> m_daemon;
};

}  // namespace drivers

#endif

#ifndef DRIVERS_COMMON_SNMP_DEVICE_DRIVER_H
#define DRIVERS_COMMON_SNMP_DEVICE_DRIVER_H

#include <string>

#include "drivers/common/AgentLink.h"
#include "drivers/common/DeviceCommands.h"
#include "drivers/common/DeviceConfiguration.h"
#include "drivers/common/DeviceOperations.h"
#include "drivers/common/SettingsHolder.h"
#include "host/H7BaseDriver.h"
#include "host/IDriver.h"

namespace drivers {

// What every driver of an SNMP-capable device shares: its life in the host, its settings, its announcement to the agent, its
// device commands. A driver derives from this class and provides the file and the controller.
//
// The device is announced when the agent says that it is there, and in `Initialize` when it is there already; it withdraws
// when it is destroyed. A device with an invalid configuration logs one line, fails its `Initialize` and is not published.
class SnmpDeviceDriver : public H7BaseDriver, public IDriver, public SettingsHolder {
 public:
  ~SnmpDeviceDriver() override;

  // Returns 0, or 1 when the configuration is invalid or the host refuses the device. A valid configuration is kept, with
  // the settings, for the life of the driver: a later call only announces the device if it is not announced yet.
  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;
  h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved) override;
  void RegisterCommands() override;

  void AgentAvailable() final;
  // These count the operations and make them fail on demand; the hooks below do them. The agent's working path is ignored.
  int CopyFrom(const std::string& path, std::string& config) final;
  int CopyTo(const std::string& path, const std::string& config) final;
  int RebootController() final;
  int StopMasterAgent() final;
  int StartMasterAgent() final;
  std::string GetSNMPVersion() final;
  // The configured answer for the configured version; no other version is valid.
  bool IsSNMPVersionValid(const std::string& version) final;

 protected:
  explicit SnmpDeviceDriver(IInstanceManager& instanceManager);

  // Called once, when `configuration` has been read and its settings are in place. The driver keeps what it needs of it and
  // of its own attributes in `config`, and restores saved settings. Returns what is wrong and what is allowed, in one line,
  // or nothing.
  virtual std::string Prepare(const DeviceConfiguration& configuration, const H7XML::INode& config) = 0;
  // Whether the configuration has to name a folder: false where the device's snmpd.conf is not on this machine.
  virtual bool NeedsFolder() const { return true; }
  // The absolute path of the device's snmpd.conf; empty before Prepare, and where the file is not on this machine.
  virtual std::string FilePath() const = 0;
  // Do the work of `CopyFrom` and `CopyTo`. Called only after Prepare.
  virtual int ReadFile(std::string& config) = 0;
  virtual int WriteFile(const std::string& config) = 0;
  // Do the work of the three operations of the controller. Called only after Prepare.
  virtual int Reboot() = 0;
  virtual int StopDaemon() = 0;
  virtual int StartDaemon() = 0;

  // One line to the host's log at the level for operators, with the device's id in front.
  void Log(const std::string& line) const;
  // Logs "cannot ACTION: why (status N)" unless `status` is 0. Returns `status`.
  int Report(const std::string& action, int status) const;
  // The status in words. For drivers that have statuses besides those of drivers/common/FileStatus.h.
  virtual std::string DescribeStatus(int status) const;
  // Logs that the folder is missing, if it is. It is never made here.
  void ReportMissingFolder(const std::string& folder) const;

  // Withdraws the device from host and agent; a second call does nothing. A driver whose hooks need its own members calls it
  // first in its destructor; otherwise the base's destructor does.
  void Leave() noexcept;

 private:
  std::string Configure(const H7XML::INode& config);
  std::string Announce();

  unsigned long m_driverId;
  bool m_published;
  std::string m_version;
  bool m_versionValid;
  AgentLink m_agent;
  DeviceOperations m_operations;
  DeviceCommands m_commands;
};

}  // namespace drivers

#endif

#ifndef DRIVERS_SIMULATED_SIMULATED_DEVICE_H
#define DRIVERS_SIMULATED_SIMULATED_DEVICE_H

#include <optional>
#include <string>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/SnmpDeviceDriver.h"

class IInstanceManager;

namespace drivers {

// An SNMP-capable device without a controller: its snmpd.conf is a real file in the folder that the project names, and the
// controller's actions only succeed. The folder is never made: a device whose folder is missing logs that when it starts,
// and its file operations fail until the folder is there.
class SimulatedDevice final : public SnmpDeviceDriver {
 public:
  explicit SimulatedDevice(IInstanceManager& instanceManager);
  ~SimulatedDevice() override;

  static IDriver* Create(IInstanceManager& instanceManager);

 private:
  std::string Prepare(const DeviceConfiguration& configuration, const H7XML::INode& config) override;
  std::string FilePath() const override;
  int ReadFile(std::string& config) override;
  int WriteFile(const std::string& config) override;
  int Reboot() override { return 0; }
  int StopDaemon() override { return 0; }
  int StartDaemon() override { return 0; }

  std::optional<ConfigFile> m_file;
};

}  // namespace drivers

#endif

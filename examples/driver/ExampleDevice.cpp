// An SNMP-capable device. The base class has its settings, its life and its announcement to the agent; what is here is its
// snmpd.conf, a file in the folder that the project names, and its controller, which has nothing to do.

#include <optional>
#include <string>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/SnmpDeviceDriver.h"

namespace {

class ExampleDevice final : public drivers::SnmpDeviceDriver {
 public:
  explicit ExampleDevice(IInstanceManager& instances) : SnmpDeviceDriver(instances) {}
  // The agent lets go of the device while its members still exist.
  ~ExampleDevice() override { Leave(); }

 private:
  // Called once. Attributes of your own are in `config`; return what is wrong with them, in one line, or nothing.
  std::string Prepare(const drivers::DeviceConfiguration& configuration, const H7XML::INode& /*config*/) override {
    ReportMissingFolder(configuration.folder);
    m_file.emplace(configuration.folder);
    return "";
  }

  // The device's file, whole. 0 is success; the host's log gets every other status in words.
  std::string FilePath() const override { return m_file ? m_file->GetPath() : ""; }
  int ReadFile(std::string& config) override { return Report("read " + FilePath(), m_file->Read(config)); }
  int WriteFile(const std::string& config) override { return Report("replace " + FilePath(), m_file->Replace(config)); }

  // The controller. 0 is success.
  int Reboot() override { return 0; }
  int StopDaemon() override { return 0; }
  int StartDaemon() override { return 0; }

  std::optional<drivers::ConfigFile> m_file;
};

IDriver* Create(IInstanceManager& instances) {
  return new ExampleDevice(instances);
}

}  // namespace

// What a driver host looks for in the module.
extern "C" {

H7_HOST_API DriverCreationFunc GetCreationFunc() {
  return &Create;
}

H7_HOST_API extern const char* const versionString;
const char* const versionString = SNMP_DRIVER_VERSION;

}  // extern "C"

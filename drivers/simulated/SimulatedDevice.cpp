#include "drivers/simulated/SimulatedDevice.h"

#include <filesystem>
#include <system_error>

#include "drivers/common/FileStatus.h"

namespace drivers {

SimulatedDevice::SimulatedDevice(IInstanceManager& instanceManager) : SnmpDeviceDriver(instanceManager) {}

SimulatedDevice::~SimulatedDevice() {
  Leave();
}

IDriver* SimulatedDevice::Create(IInstanceManager& instanceManager) {
  return new SimulatedDevice(instanceManager);
}

std::string SimulatedDevice::Prepare(const DeviceConfiguration& configuration, const H7XML::INode&) {
  std::error_code error;
  if (!std::filesystem::is_directory(configuration.folder, error)) {
    Log("the folder " + configuration.folder + " is missing" + (error ? " (" + error.message() + ")" : std::string()) +
        "; make it, the device does not");
  }
  m_file.emplace(configuration.folder);
  return std::string();
}

std::string SimulatedDevice::FilePath() const {
  return m_file ? m_file->GetPath() : std::string();
}

int SimulatedDevice::ReadFile(std::string& config) {
  return Report("read", m_file->Read(config));
}

int SimulatedDevice::WriteFile(const std::string& config) {
  return Report("replace", m_file->Replace(config));
}

int SimulatedDevice::Report(const char* action, int status) const {
  if (status != 0) {
    Log(std::string("cannot ") + action + " " + m_file->GetPath() + ": " + DescribeFileStatus(status) + " (status " +
        std::to_string(status) + ")");
  }
  return status;
}

}  // namespace drivers

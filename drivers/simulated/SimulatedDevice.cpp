#include "drivers/simulated/SimulatedDevice.h"

namespace drivers {

SimulatedDevice::SimulatedDevice(IInstanceManager& instanceManager) : SnmpDeviceDriver(instanceManager) {}

SimulatedDevice::~SimulatedDevice() {
  Leave();
}

IDriver* SimulatedDevice::Create(IInstanceManager& instanceManager) {
  return new SimulatedDevice(instanceManager);
}

std::string SimulatedDevice::Prepare(const DeviceConfiguration& configuration, const H7XML::INode&) {
  ReportMissingFolder(configuration.folder);
  m_file.emplace(configuration.folder);
  return std::string();
}

std::string SimulatedDevice::FilePath() const {
  return m_file ? m_file->GetPath() : std::string();
}

int SimulatedDevice::ReadFile(std::string& config) {
  return Report("read " + FilePath(), m_file->Read(config));
}

int SimulatedDevice::WriteFile(const std::string& config) {
  return Report("replace " + FilePath(), m_file->Replace(config));
}

}  // namespace drivers

#include "drivers/common/DeviceOperations.h"

namespace drivers {

const char* NameOf(DeviceOperation operation) {
  static constexpr std::array<const char*, kDeviceOperations.size()> kNames = {"CopyFrom", "CopyTo", "RebootController",
                                                                               "StopMasterAgent", "StartMasterAgent"};
  return kNames[static_cast<std::size_t>(operation)];
}

std::optional<DeviceOperation> OperationNamed(const std::string& name) {
  for (const DeviceOperation operation : kDeviceOperations) {
    if (name == NameOf(operation)) {
      return operation;
    }
  }
  return std::nullopt;
}

int DeviceOperations::Begin(DeviceOperation operation) {
  Record& record = m_records[static_cast<std::size_t>(operation)];
  ++record.count;
  const int status = record.status;
  if (status != 0 && record.timesLeft && --*record.timesLeft == 0) {
    record.status = 0;
  }
  return status;
}

void DeviceOperations::Fail(DeviceOperation operation, int status, std::optional<unsigned long> times) {
  Record& record = m_records[static_cast<std::size_t>(operation)];
  record.status = times == 0UL ? 0 : status;
  record.timesLeft = times;
}

unsigned long DeviceOperations::Count(DeviceOperation operation) const {
  return m_records[static_cast<std::size_t>(operation)].count;
}

}  // namespace drivers

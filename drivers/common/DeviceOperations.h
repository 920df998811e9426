#ifndef DRIVERS_COMMON_DEVICE_OPERATIONS_H
#define DRIVERS_COMMON_DEVICE_OPERATIONS_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace drivers {

// What the agent can ask of a device besides its settings.
enum class DeviceOperation { CopyFrom, CopyTo, RebootController, StopMasterAgent, StartMasterAgent };

inline constexpr std::array<DeviceOperation, 5> kDeviceOperations = {
    DeviceOperation::CopyFrom, DeviceOperation::CopyTo, DeviceOperation::RebootController, DeviceOperation::StopMasterAgent,
    DeviceOperation::StartMasterAgent};

// The operation's name, as in `ISupportSNMP`; and back, empty for no such operation.
const char* NameOf(DeviceOperation operation);
std::optional<DeviceOperation> OperationNamed(const std::string& name);

// Counts a device's operations and lets them fail on demand.
class DeviceOperations {
 public:
  // Called first in an operation. Counts it, failing or not; 0 when the operation is to be done, else the status that it is
  // to answer without doing anything.
  int Begin(DeviceOperation operation);

  // From now on the operation fails with `status`: `times` times, or without `times` until told otherwise. Replaces what was
  // told before; status 0 ends it.
  void Fail(DeviceOperation operation, int status, std::optional<unsigned long> times);

  unsigned long Count(DeviceOperation operation) const;

 private:
  struct Record {
    unsigned long count = 0;
    int status = 0;
    std::optional<unsigned long> timesLeft;
  };

  std::array<Record, kDeviceOperations.size()> m_records;
};

}  // namespace drivers

#endif

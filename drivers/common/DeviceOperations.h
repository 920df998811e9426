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

// The operation's name, as in `ISupportSNMP`.
const char* NameOf(DeviceOperation operation);
// The operation of that name, or nothing.
std::optional<DeviceOperation> OperationNamed(const std::string& name);

// Counts a device's operations and makes them fail on demand.
class DeviceOperations {
 public:
  // Called first in an operation. Counts it, failing or not. Returns 0 when the operation shall go on, else the status that
  // it shall return without doing anything.
  int Begin(DeviceOperation operation);

  // From now on the operation fails with `status`: `times` times, or until the next call. Replaces what an earlier call
  // asked for; status 0 ends it.
  void Fail(DeviceOperation operation, int status, std::optional<unsigned long> times);

  // How often the operation was called.
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

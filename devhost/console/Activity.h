#ifndef DEVHOST_CONSOLE_ACTIVITY_H
#define DEVHOST_CONSOLE_ACTIVITY_H

#include <array>
#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace devhost {

// What happened to each device in the last hour, minute by minute. All times are milliseconds since 1970.
class Activity {
 public:
  static constexpr std::size_t kMinutes = 60;
  static constexpr std::size_t kMostDevices = 2048;  // more are not counted

  // An event of the host process: restarts, probes, and the names of drivers.
  void OnEvent(const nlohmann::ordered_json& event, std::int64_t now);
  // The host process has answered a request about this device.
  void OnRequest(std::uint64_t device, std::int64_t now);

  // The hour that ends with the minute of `now`: {from, minutes, devices}. Devices of which nothing was heard are missing.
  std::string AsJson(std::int64_t now) const;

 private:
  struct Minute {
    std::int64_t number = -1;  // minutes since 1970
    std::uint32_t requests = 0;
    std::uint32_t restarts = 0;
    double probeMs = -1;  // the slowest one; negative when there was none
  };
  struct Device {
    std::string name;
    std::array<Minute, kMinutes> minutes;
  };

  Device* Find(std::uint64_t id);
  Minute* At(std::uint64_t id, std::int64_t now);

  std::map<std::uint64_t, Device> m_devices;
};

}  // namespace devhost

#endif

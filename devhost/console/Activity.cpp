#include "devhost/console/Activity.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace devhost {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kMinute = 60'000;
constexpr std::size_t kLongestName = 256;

// The member as a number, or nothing to count with.
const Json* NumberIn(const Json& event, const char* name) {
  const auto found = event.find(name);
  return found != event.end() && found->is_number() ? &*found : nullptr;
}

std::string TextIn(const Json& event, const char* name) {
  const auto found = event.find(name);
  return found != event.end() && found->is_string() ? found->get<std::string>() : "";
}

}  // namespace

Activity::Device* Activity::Find(std::uint64_t id) {
  const auto found = m_devices.find(id);
  if (found != m_devices.end()) {
    return &found->second;
  }
  return m_devices.size() < kMostDevices ? &m_devices[id] : nullptr;
}

Activity::Minute* Activity::At(std::uint64_t id, std::int64_t now) {
  Device* const device = Find(id);
  if (device == nullptr) {
    return nullptr;
  }
  const std::int64_t number = now / kMinute;
  Minute& minute = device->minutes[static_cast<std::size_t>(number) % kMinutes];
  if (minute.number != number) {
    minute = {};
    minute.number = number;
  }
  return &minute;
}

void Activity::OnEvent(const Json& event, std::int64_t now) {
  const std::string kind = TextIn(event, "kind");
  const Json* const id = NumberIn(event, kind == "load" ? "driverId" : "device");
  if (id == nullptr || !id->is_number_unsigned()) {
    return;
  }
  const auto device = id->get<std::uint64_t>();
  if (kind == "load") {
    if (Device* const found = Find(device)) {
      found->name = TextIn(event, "driver").substr(0, kLongestName);
    }
  } else if (kind == "restart") {
    if (Minute* const minute = At(device, now)) {
      ++minute->restarts;
    }
  } else if (kind == "probe") {
    const Json* const ms = NumberIn(event, "ms");
    Minute* const minute = ms == nullptr ? nullptr : At(device, now);
    if (minute != nullptr) {
      minute->probeMs = std::max(minute->probeMs, ms->get<double>());
    }
  }
}

void Activity::OnRequest(std::uint64_t device, std::int64_t now) {
  if (Minute* const minute = At(device, now)) {
    ++minute->requests;
  }
}

std::string Activity::AsJson(std::int64_t now) const {
  const std::int64_t first = now / kMinute - static_cast<std::int64_t>(kMinutes) + 1;
  Json devices = Json::array();
  for (const auto& [id, device] : m_devices) {
    Json requests = Json::array();
    Json restarts = Json::array();
    Json probes = Json::array();
    for (std::int64_t number = first; number <= now / kMinute; ++number) {
      const Minute& kept = device.minutes[static_cast<std::size_t>(number) % kMinutes];
      const Minute minute = kept.number == number ? kept : Minute{};
      requests.push_back(minute.requests);
      restarts.push_back(minute.restarts);
      probes.push_back(minute.probeMs < 0 ? Json() : Json(minute.probeMs));
    }
    devices.push_back(
        {{"id", id}, {"name", device.name}, {"requests", requests}, {"restarts", restarts}, {"probeMs", probes}});
  }
  const Json all = {{"from", first * kMinute}, {"minutes", kMinutes}, {"devices", devices}};
  return all.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace devhost

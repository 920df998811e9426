#ifndef DEVHOST_SESSION_DEVICES_H
#define DEVHOST_SESSION_DEVICES_H

#include <nlohmann/json_fwd.hpp>

#include "devhost/session/Copies.h"
#include "devhost/session/LiveHost.h"
#include "devhost/session/Request.h"

namespace devhost {

// Requests that look at devices, or have the agent do what does not change settings. Each returns the body of the answer,
// and throws RequestError, or HostError for what a driver did.
class Devices {
 public:
  // All outlive it.
  Devices(LiveHost& host, Copies& copies, Masker& secrets) : m_host(host), m_copies(copies), m_secrets(secrets) {}

  nlohmann::ordered_json List(const Request& request);
  nlohmann::ordered_json Show(const Request& request);
  nlohmann::ordered_json Manage(const Request& request);
  nlohmann::ordered_json GiveUp(const Request& request);
  nlohmann::ordered_json Act(const Request& request);

 private:
  nlohmann::ordered_json ObjectOf(const DeviceGlance& glance);
  nlohmann::ordered_json SetManaged(const Request& request, const char* command);
  // Sends a command about a device to the agent. Returns its reply.
  std::string TellAgent(const char* command, unsigned long deviceId);

  LiveHost& m_host;
  Copies& m_copies;
  Masker& m_secrets;
};

// The id of the device that a path names: /devices/12/...
unsigned long DeviceOf(const Request& request);

}  // namespace devhost

#endif

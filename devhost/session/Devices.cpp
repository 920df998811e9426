#include "devhost/session/Devices.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "devhost/session/RequestError.h"
#include "devhost/session/ShownSettings.h"
#include "devhost/text/Words.h"

namespace devhost {

using nlohmann::ordered_json;

unsigned long DeviceOf(const Request& request) {
  return NumberOfStep(request.steps[1]);
}

ordered_json Devices::ObjectOf(const DeviceGlance& glance) {
  const DriverEntry& driver = *glance.driver;
  const DaemonState daemon = m_host.Daemon(driver.id);
  ordered_json object = {{"id", driver.id},
                         {"name", driver.name},
                         {"module", driver.module.substr(driver.module.rfind('/') + 1)},
                         {"listed", glance.isListed},
                         {"managed", glance.isManaged},
                         {"dirty", glance.isDirty},
                         {"reachable", daemon.address.empty() ? glance.isReachable : daemon.online},
                         {"daemon", nullptr},
                         {"version", m_secrets.Text(glance.version, WrittenBy::Others)}};
  if (!daemon.address.empty()) {
    object["daemon"] = {{"running", daemon.running},
                        {"address", m_secrets.Text(daemon.address)},
                        {"pid", daemon.running ? ordered_json(daemon.pid) : ordered_json()},
                        {"waits", daemon.pending}};
  }
  if (!glance.problem.empty()) {
    object["problem"] = m_secrets.Text(glance.problem, WrittenBy::Others);
  }
  return object;
}

ordered_json Devices::List(const Request&) {
  ordered_json devices = ordered_json::array();
  for (const DeviceGlance& glance : m_host.Devices()) {
    devices.push_back(ObjectOf(glance));
  }
  return {{"devices", std::move(devices)}};
}

ordered_json Devices::Show(const Request& request) {
  const unsigned long id = DeviceOf(request);
  const DeviceAnswers answers = m_host.Ask(id);
  ordered_json settings = ShownSettings(answers, m_secrets);
  ordered_json messages = ordered_json::array();
  if (!answers.problem.empty()) {
    messages.push_back(m_secrets.Text(answers.problem, WrittenBy::Others));
  }
  return {{"device", ObjectOf(m_host.Device(id))}, {"settings", std::move(settings)},
          {"base", m_copies.BaseOf(id)},           {"reachable", answers.copyStatus != kCannotBeReached},
          {"fileProblem", m_host.FileProblem(id)}, {"messages", std::move(messages)}};
}

ordered_json Devices::Manage(const Request& request) {
  return SetManaged(request, "AddManagedDevice");
}

ordered_json Devices::GiveUp(const Request& request) {
  return SetManaged(request, "DeleteManagedDevice");
}

ordered_json Devices::SetManaged(const Request& request, const char* command) {
  const unsigned long id = DeviceOf(request);
  m_host.Device(id);
  if (TellAgent(command, id) == "<Fail/>") {
    throw RequestError(409, "refused", "the agent does not know the device: it has not announced itself, or has withdrawn");
  }
  return {{"device", ObjectOf(m_host.Device(id))}};
}

ordered_json Devices::Act(const Request& request) {
  const unsigned long id = DeviceOf(request);
  AllowMembers(request.body, {"action", "device"});
  const std::string action = TextMember(request.body, "action");
  const char* const command = action == "reboot"  ? "RebootController"
                              : action == "stop"  ? "StopMasterAgent"
                              : action == "start" ? "StartMasterAgent"
                                                  : nullptr;
  if (command == nullptr) {
    throw WrongBody("action is not one; allowed: reboot, stop, start");
  }
  const DeviceGlance glance = m_host.Device(id);
  if (TextMember(request.body, "device") != glance.driver->name) {
    throw WrongBody("device is not the name of this device; allowed: " + Quoted(glance.driver->name));
  }
  const std::string reply = m_secrets.Xml(TellAgent(command, id));
  m_host.Daemon(id);
  return {{"reply", reply}};
}

std::string Devices::TellAgent(const char* command, unsigned long deviceId) {
  return m_host.Get().Command(m_host.RequireAgent().id, command, {{"deviceId", std::to_string(deviceId)}});
}

}  // namespace devhost

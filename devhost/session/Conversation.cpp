#include "devhost/session/Conversation.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "devhost/driver/EventListeners.h"
#include "devhost/session/RequestError.h"

namespace devhost {

using nlohmann::json;
using nlohmann::ordered_json;

namespace {

// A parameter may stand several times: it is a list then.
Parameters ReadParameters(const json& body) {
  const json& given = Member(body, "parameters");
  if (!given.is_object()) {
    throw WrongBody("parameters is not an object of names and texts");
  }
  Parameters parameters;
  for (const auto& parameter : given.items()) {
    const json values = parameter.value().is_array() ? parameter.value() : json::array({parameter.value()});
    for (const json& value : values) {
      if (!value.is_string()) {
        throw WrongBody("the value of a parameter is neither a text nor a list of texts");
      }
      parameters.emplace_back(parameter.key(), value.get<std::string>());
    }
  }
  return parameters;
}

}  // namespace

ordered_json Conversation::Variables(const Request&) {
  ordered_json variables = ordered_json::array();
  for (const VariableEntry& variable : m_host.Get().Variables(Host::Flags::Current)) {
    variables.push_back({{"device", variable.deviceId},
                         {"id", variable.variableId},
                         {"name", m_secrets.Text(variable.name)},
                         {"kind", variable.user ? "userVariable" : "variable"},
                         {"user", variable.user},
                         {"hidden", variable.hidden},
                         {"trapEnabled", variable.trapEnabled}});
  }
  return {{"variables", variables}};
}

ordered_json Conversation::SetVariable(const Request& request) {
  const unsigned long deviceId = NumberOfStep(request.steps[1]);
  const unsigned long variableId = NumberOfStep(request.steps[2]);
  AllowMembers(request.body, {"trapEnabled"});
  const bool enabled = SwitchMember(request.body, "trapEnabled");
  try {
    m_host.Get().SetTrapEnabled(deviceId, variableId, enabled);
  } catch (const HostError&) {
    throw NotFound("the project has no such variable; GET /variables has those that there are");
  }
  m_channel.Event(
      ordered_json{{"kind", "flag"}, {"deviceId", deviceId}, {"variableId", variableId}, {"trapEnabled", enabled}});
  return ordered_json::object();
}

ordered_json Conversation::Commands(const Request&) {
  ordered_json drivers = ordered_json::array();
  for (const DriverEntry& driver : m_host.GetProject().drivers) {
    ordered_json commands = ordered_json::array();
    for (const std::string& command : m_host.Get().Commands(driver.id)) {
      commands.push_back(m_secrets.Text(command));
    }
    drivers.push_back({{"id", driver.id}, {"name", driver.name}, {"commands", commands}});
  }
  return {{"drivers", drivers}, {"events", SystemEventList()}};
}

ordered_json Conversation::Command(const Request& request) {
  AllowMembers(request.body, {"driver", "name", "parameters"});
  const Parameters parameters = ReadParameters(request.body);
  m_secrets.Fields(parameters);
  const unsigned long driverId = NumberMember(request.body, "driver");
  if (m_host.Driver(driverId) == nullptr) {
    throw NotFound("the project has no driver with that id; GET /commands has those that there are");
  }
  const std::string name = TextMember(request.body, "name");
  const std::vector<std::string> known = m_host.Get().Commands(driverId);
  if (std::find(known.begin(), known.end(), name) == known.end()) {
    throw NotFound("the driver has not registered that command; GET /commands has those that it has");
  }
  const std::string reply = m_host.Get().Command(driverId, name, parameters);
  // A driver's own command may do anything to its device, and nothing tells of that.
  m_channel.Event(ordered_json{{"kind", "devices"}});
  return {{"reply", m_secrets.Xml(reply)}};
}

ordered_json Conversation::Event(const Request& request) {
  AllowMembers(request.body, {"name", "parameters"});
  const Parameters parameters = ReadParameters(request.body);
  m_secrets.Fields(parameters);
  const std::string name = TextMember(request.body, "name");
  if (SystemEventIdOf(name) == 0) {
    throw WrongBody("there is no such system event; allowed: " + SystemEventNames());
  }
  m_host.Get().SendEvent(name, parameters);
  return ordered_json::object();
}

}  // namespace devhost

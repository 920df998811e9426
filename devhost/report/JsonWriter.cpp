#include "devhost/report/JsonWriter.h"

#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace devhost {

namespace {

using Json = nlohmann::ordered_json;

// How a kind is called, and its text.
struct Names {
  const char* kind;
  const char* text;  // "" when the kind has none
};

Names NamesOf(Occurrence::Kind kind) {
  using Kind = Occurrence::Kind;
  static const std::map<Kind, Names> kNames = {
      {Kind::Load, {"load", "module"}},   {Kind::Unload, {"unload", "module"}},
      {Kind::Command, {"command", ""}},   {Kind::Reply, {"reply", "xml"}},
      {Kind::Event, {"event", ""}},       {Kind::Notification, {"notification", "xml"}},
      {Kind::Log, {"log", "text"}},       {Kind::Invalidate, {"invalidate", ""}},
      {Kind::Status, {"status", "text"}}, {Kind::Manners, {"manners", "text"}},
      {Kind::Failure, {"error", "text"}}, {Kind::StateProblem, {"error", "text"}}};
  return kNames.at(kind);
}

Names NamesOf(ScriptOccurrence::Kind kind) {
  using Kind = ScriptOccurrence::Kind;
  static const std::map<Kind, Names> kNames = {
      {Kind::Restart, {"restart", ""}}, {Kind::Command, {"command", ""}},   {Kind::Flag, {"flag", ""}},
      {Kind::File, {"file", "text"}},   {Kind::Settings, {"settings", ""}}, {Kind::Counts, {"counts", ""}},
      {Kind::Daemon, {"daemon", ""}},   {Kind::State, {"state", "xml"}},    {Kind::Variables, {"variables", ""}},
      {Kind::Run, {"run", "text"}},     {Kind::Output, {"output", "text"}}, {Kind::Print, {"print", "text"}},
      {Kind::Error, {"error", "text"}}, {Kind::Expect, {"expect", "text"}}, {Kind::Done, {"done", ""}}};
  return kNames.at(kind);
}

// A parameter of an event may stand several times: it has a list of its values then. There may be very many of them, which
// an ordered object would look through for each one that is added.
Json Object(const Parameters& parameters) {
  nlohmann::json object = nlohmann::json::object();
  for (const auto& [name, value] : parameters) {
    nlohmann::json& values = object[name];
    if (values.is_null()) {
      values = value;
    } else if (values.is_array()) {
      values.push_back(value);
    } else {
      values = {values, value};
    }
  }
  return object;
}

// What both sorts of occurrence have.
template <class Any>
Json Fields(const Any& occurrence) {
  const Names names = NamesOf(occurrence.kind);
  Json line = {{"kind", names.kind}};
  if (!occurrence.driverName.empty()) {
    line["driver"] = occurrence.driverName;
    line["driverId"] = occurrence.driverId;
  }
  if (!occurrence.call.empty()) {
    line["call"] = occurrence.call;
  }
  if (occurrence.kind == Any::Kind::Command) {
    line["name"] = occurrence.name;
    line["parameters"] = Object(occurrence.parameters);
  }
  if (*names.text != '\0') {
    line[names.text] = occurrence.text;
  }
  return line;
}

// The members of a line that shows a device.
void AddSettings(Json& line, const DeviceSettings& shown) {
  Json& settings = line["settings"] = Json::array();
  for (const DeviceSetting& setting : shown.settings) {
    settings.push_back({{"name", setting.name}, {"value", setting.value}, {"erased", setting.erased}});
  }
  Json& targets = line["trapTargets"] = Json::array();
  for (const DeviceTrapTarget& target : shown.trapTargets) {
    targets.push_back({{"target", target.target}, {"community", target.community}, {"port", target.port}});
  }
}

void AddCounts(Json& line, const std::vector<OperationCount>& shown) {
  Json& counts = line["counts"] = Json::object();
  for (const OperationCount& count : shown) {
    counts[count.operation] = count.count;
  }
}

void AddDaemon(Json& line, const DaemonState& daemon) {
  line["running"] = daemon.running;
  if (daemon.running) {
    line["pid"] = daemon.pid;
  }
  line["address"] = daemon.address;
  line["online"] = daemon.online;
  line["pending"] = daemon.pending;
}

// The object behind the numbers of its line, on one line.
std::string OnOneLine(std::size_t number, const Where& where, const Json& object) {
  Json line = {{"n", number}};
  if (where.line != 0) {
    line["line"] = where.line;
  }
  line.update(object);
  return line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

Json OccurrenceObject(const Occurrence& occurrence) {
  Json line = Fields(occurrence);
  if (occurrence.kind == Occurrence::Kind::Event) {
    line["name"] = occurrence.name;
    line["parameters"] = Object(occurrence.parameters);
  } else if (occurrence.kind == Occurrence::Kind::Status) {
    line["name"] = occurrence.name;
  } else if (occurrence.kind == Occurrence::Kind::Log) {
    line["level"] = occurrence.level;
  }
  if (!occurrence.candidates.empty()) {
    line["candidates"] = occurrence.candidates;
  }
  return line;
}

std::string JsonLine(std::size_t number, const Occurrence& occurrence, const Where& where) {
  return OnOneLine(number, where, OccurrenceObject(occurrence));
}

std::string JsonLine(std::size_t number, const ScriptOccurrence& occurrence, const Where& where) {
  using Kind = ScriptOccurrence::Kind;
  Json line = Fields(occurrence);
  if (occurrence.kind == Kind::Flag) {
    const VariableEntry& variable = occurrence.variables.at(0);
    line["deviceId"] = variable.deviceId;
    line["variableId"] = variable.variableId;
    line["trapEnabled"] = variable.trapEnabled;
  } else if (occurrence.kind == Kind::Variables) {
    Json& variables = line["variables"] = Json::array();
    for (const VariableEntry& variable : occurrence.variables) {
      variables.push_back({{"deviceId", variable.deviceId},
                           {"variableId", variable.variableId},
                           {"name", variable.name},
                           {"user", variable.user},
                           {"hidden", variable.hidden},
                           {"trapEnabled", variable.trapEnabled}});
    }
  } else if (occurrence.kind == Kind::Settings) {
    AddSettings(line, occurrence.settings);
  } else if (occurrence.kind == Kind::Counts) {
    AddCounts(line, occurrence.counts);
  } else if (occurrence.kind == Kind::Daemon) {
    AddDaemon(line, occurrence.daemon);
  } else if (occurrence.kind == Kind::Expect) {
    line["details"] = occurrence.details;
  } else if (occurrence.kind == Kind::Done) {
    line["good"] = occurrence.good;
  }
  return OnOneLine(number, where, line);
}

}  // namespace devhost

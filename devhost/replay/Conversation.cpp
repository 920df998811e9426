#include "devhost/replay/Conversation.h"

#include <boost/algorithm/string/replace.hpp>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "devhost/script/ScriptExpectations.h"
#include "devhost/secrets/KnownSecrets.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Json = nlohmann::ordered_json;
using Kind = ScriptOccurrence::Kind;

// Deeper than any line is, and nothing that a stack has to fear.
constexpr int kDeepest = 8;

Json Parse(const std::string& text) {
  const Json json = Json::parse(text, [](int depth, Json::parse_event_t, const Json&) {
    if (depth > kDeepest) {
      throw std::runtime_error("the line is nested too deeply");
    }
    return true;
  });
  if (!json.is_object()) {
    throw std::runtime_error("the line is not a JSON object");
  }
  return json;
}

std::string TextIn(const Json& line, const char* member) {
  const auto found = line.find(member);
  if (found == line.end() || !found->is_string()) {
    throw std::runtime_error(std::string("there is no text \"") + member + "\"");
  }
  return found->get<std::string>();
}

unsigned long IdIn(const Json& line, const char* member) {
  const auto found = line.find(member);
  if (found == line.end() || !found->is_number_unsigned() ||
      found->get<std::uint64_t>() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::runtime_error(std::string("there is no \"") + member + "\"; allowed: a whole number from 0 to 4294967295");
  }
  return static_cast<unsigned long>(found->get<std::uint64_t>());
}

std::vector<ScriptParameter> ParametersIn(const Json& line) {
  const auto found = line.find("parameters");
  if (found == line.end() || !found->is_object()) {
    throw std::runtime_error("there is no object \"parameters\"");
  }
  std::vector<ScriptParameter> parameters;
  for (const auto& [name, value] : found->items()) {
    // One that stands several times has a list of its values.
    for (const Json& one : value.is_array() ? value : Json::array({value})) {
      if (!one.is_string()) {
        throw std::runtime_error("the parameter " + Quoted(name) + " is not a text");
      }
      parameters.push_back({name, one.get<std::string>()});
    }
  }
  return parameters;
}

EventAction EventIn(const Json& line) {
  static const std::set<std::string> kChanges = {"OnVariableAdded", "OnUserVariableAdded", "OnVariableRemoved",
                                                 "OnItemRemoved"};
  EventAction event{TextIn(line, "name"), ParametersIn(line)};
  if (kChanges.count(event.name) != 0) {
    throw std::runtime_error("a replay does not add or remove variables; allowed: the project's own variables");
  }
  return event;
}

FlagAction FlagIn(const Json& line) {
  const auto enabled = line.find("trapEnabled");
  if (enabled == line.end() || !enabled->is_boolean()) {
    throw std::runtime_error("there is no \"trapEnabled\"; allowed: true, false");
  }
  return {IdIn(line, "deviceId"), IdIn(line, "variableId"), enabled->get<bool>()};
}

// What shows something of a device.
std::optional<Kind> ShownBy(const std::string& kind) {
  static const std::pair<const char*, Kind> kShown[] = {{"file", Kind::File},
                                                        {"settings", Kind::Settings},
                                                        {"counts", Kind::Counts},
                                                        {"daemon", Kind::Daemon},
                                                        {"state", Kind::State}};
  for (const auto& [name, shown] : kShown) {
    if (kind == name) {
      return shown;
    }
  }
  return std::nullopt;
}

std::optional<Action> ActionOf(const Json& line, const DriverNames& names) {
  static const std::set<std::string> kAnswers = {"load",       "unload", "reply",   "notification", "log",
                                                 "invalidate", "status", "manners", "error"};
  const std::string kind = TextIn(line, "kind");
  if (kAnswers.count(kind) != 0) {
    return std::nullopt;
  }
  if (kind == "command") {
    return CommandAction{names.Find(TextIn(line, "driver")), TextIn(line, "name"), ParametersIn(line)};
  }
  if (kind == "event") {
    return EventIn(line);
  }
  if (kind == "flag") {
    return FlagIn(line);
  }
  if (kind == "restart") {
    return RestartAction{};
  }
  if (kind == "variables") {
    return ShowAction{Kind::Variables};
  }
  if (const std::optional<Kind> shown = ShownBy(kind)) {
    return ShowAction{*shown, names.Find(TextIn(line, "driver"))};
  }
  throw std::runtime_error(kind == "run" || kind == "output" ? "a replay runs no programs; remove the line"
                                                             : "the kind " + Quoted(kind) + " is not known");
}

// What a script says or finds, and not the drivers.
bool IsCompared(const Json& line) {
  const std::string kind = TextIn(line, "kind");
  return kind != "print" && kind != "expect" && kind != "done" && (kind != "error" || line.count("line") == 0);
}

template <class Change>
void ChangeTexts(Json& value, const Change& change) {
  if (value.is_string()) {
    value = change(value.get<std::string>());
  } else if (value.is_structured()) {
    for (Json& part : value) {
      ChangeTexts(part, change);
    }
  }
}

// A line without what differs from run to run.
std::string Normal(Json line, const std::string& folder) {
  for (const char* const member : {"n", "line", "module", "pid", "address"}) {
    line.erase(member);
  }
  ChangeTexts(
      line, [&folder](const std::string& text) { return boost::replace_all_copy(WithoutTimes(text), folder, "{project}"); });
  return line.dump();
}

// A community that is masked would be sent as it stands.
void RefuseMasked(Json line) {
  const std::string mask = kMask;
  ChangeTexts(line, [&mask](const std::string& text) {
    if (text == mask || text.find('>' + mask + '<') != std::string::npos) {
      throw std::runtime_error("a value is " + mask + "; allowed: what is recorded with --show-secrets");
    }
    return text;
  });
}

}  // namespace

Conversation ReadConversation(const std::string& file, const std::string& text, const DriverNames& names,
                              const std::string& folder) {
  Conversation conversation{file, {}};
  std::size_t number = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    ++number;
    try {
      const Json line = Parse(text.substr(at, end - at));
      if (IsCompared(line)) {
        RefuseMasked(line);
        conversation.lines.push_back({number, Normal(line, folder), ActionOf(line, names)});
      }
    } catch (const Json::exception&) {
      throw ConversationError(file + ":" + std::to_string(number) + ": the line is not JSON");
    } catch (const std::runtime_error& error) {
      throw ConversationError(file + ":" + std::to_string(number) + ": " + error.what());
    }
    at = end + 1;
  }
  return conversation;
}

std::string ComparedLine(const std::string& json, const std::string& folder) {
  Json line = Json::parse(json);
  // Every error of a replay counts: only what went well is played again.
  const bool isError = line["kind"] == "error";
  return isError || IsCompared(line) ? Normal(std::move(line), folder) : "";
}

}  // namespace devhost

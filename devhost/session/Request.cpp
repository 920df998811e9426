#include "devhost/session/Request.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

#include "devhost/session/RequestError.h"

namespace devhost {

namespace {

using nlohmann::json;

constexpr std::uint32_t kLargestId = std::numeric_limits<std::uint32_t>::max();

// Leaves out what lies too deep, and says so: the id stands above that, and the error is answered under it.
json Parsed(const std::string& line, bool& isDeep) {
  const auto isShallow = [&isDeep](int depth, json::parse_event_t, json&) {
    const bool isTooDeep = depth > static_cast<int>(kDeepestBody);
    isDeep = isDeep || isTooDeep;
    return !isTooDeep;
  };
  try {
    return json::parse(line, isShallow);
  } catch (const json::exception&) {
    throw BadRequest("the request is not JSON in UTF-8");
  }
}

std::string OptionalText(const json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end()) {
    return "";
  }
  if (!found->is_string()) {
    throw BadRequest(std::string(name) + " is not a text");
  }
  return found->get<std::string>();
}

json OptionalObject(json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end() || found->is_null()) {
    return json::object();
  }
  if (!found->is_object()) {
    throw WrongBody(std::string("the ") + name + " is not a JSON object");
  }
  return std::move(*found);
}

std::vector<std::string> StepsOf(const std::string& path) {
  if (path.empty() || path[0] != '/') {
    throw BadRequest("the path does not begin with a slash");
  }
  std::vector<std::string> steps;
  for (std::size_t at = 1; at <= path.size();) {
    const std::size_t end = std::min(path.find('/', at), path.size());
    steps.push_back(path.substr(at, end - at));
    at = end + 1;
  }
  return steps;
}

}  // namespace

void ReadRequest(const std::string& line, Request& request) {
  bool isDeep = false;
  json object = Parsed(line, isDeep);
  if (!object.is_object()) {
    throw BadRequest("the request is not a JSON object");
  }
  const auto id = object.find("id");
  if (id == object.end() || !id->is_number_unsigned()) {
    throw BadRequest("the request has no id; allowed: a number");
  }
  request.id = *id;
  if (isDeep) {
    throw WrongBody("the request nests deeper than " + std::to_string(kDeepestBody) + " levels");
  }
  request.method = OptionalText(object, "method");
  request.path = OptionalText(object, "path");
  request.steps = StepsOf(request.path);
  request.ifMatch = OptionalText(object, "ifMatch");
  request.query = OptionalObject(object, "query");
  request.body = OptionalObject(object, "body");
}

const json& Member(const json& object, const char* name, const std::string& place) {
  const auto found = object.find(name);
  if (found == object.end()) {
    throw WrongBody(place + name + " is missing");
  }
  return *found;
}

std::string TextMember(const json& object, const char* name, const std::string& place) {
  const json& member = Member(object, name, place);
  if (!member.is_string()) {
    throw WrongBody(place + name + " is not a text");
  }
  return member.get<std::string>();
}

bool SwitchMember(const json& object, const char* name, const std::string& place) {
  const json& member = Member(object, name, place);
  if (!member.is_boolean()) {
    throw WrongBody(place + name + " is neither true nor false");
  }
  return member.get<bool>();
}

unsigned long NumberMember(const json& object, const char* name, const std::string& place) {
  const json& member = Member(object, name, place);
  if (!member.is_number_unsigned() || member.get<std::uint64_t>() > kLargestId) {
    throw WrongBody(place + name + " is not a number from 0 to " + std::to_string(kLargestId));
  }
  return member.get<unsigned long>();
}

void AllowMembers(const json& object, const std::vector<const char*>& names, const std::string& place) {
  std::string allowed;
  for (const char* const name : names) {
    allowed += (allowed.empty() ? "" : ", ") + std::string(name);
  }
  if (!object.is_object()) {
    throw WrongBody((place.empty() ? "the body" : place.substr(0, place.size() - 1)) +
                    " is not an object; allowed are the members " + allowed);
  }
  for (const auto& member : object.items()) {
    const auto isIt = [&member](const char* name) { return member.key() == name; };
    if (std::none_of(names.begin(), names.end(), isIt)) {
      throw WrongBody((place.empty() ? "the body" : place.substr(0, place.size() - 1)) +
                      " has a member that is not known; allowed: " + (allowed.empty() ? "none" : allowed));
    }
  }
}

unsigned long NumberOfStep(const std::string& step) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(step.data(), step.data() + step.size(), number);
  if (error != std::errc() || end != step.data() + step.size()) {
    throw NotFound("the path names a number that is not one; allowed: 0 to " + std::to_string(kLargestId));
  }
  return number;
}

}  // namespace devhost

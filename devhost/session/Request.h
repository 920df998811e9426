#ifndef DEVHOST_SESSION_REQUEST_H
#define DEVHOST_SESSION_REQUEST_H

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace devhost {

// One request, as the front sends it.
struct Request {
  nlohmann::json id;               // of the answer, too; null where the line has none that can be used
  std::string method;              // "GET"
  std::string path;                // "/devices/12/settings"
  std::vector<std::string> steps;  // of it: "devices", "12", "settings"
  nlohmann::json query;            // an object
  std::string ifMatch;             // "" for none
  nlohmann::json body;             // an object; an empty one for none
};

// Bodies nest less than this. It keeps a line of nothing but brackets from using up the stack.
inline constexpr std::size_t kDeepestBody = 32;

// Reads a line. Whatever it holds, the id is found first when there is one, so that the error can be answered. Throws
// RequestError.
void ReadRequest(const std::string& line, Request& request);

// Members of a body. All throw RequestError when the member is missing or is something else, with `place` in front of its
// name: "settings.".
const nlohmann::json& Member(const nlohmann::json& object, const char* name, const std::string& place = "");
std::string TextMember(const nlohmann::json& object, const char* name, const std::string& place = "");
bool SwitchMember(const nlohmann::json& object, const char* name, const std::string& place = "");
// A number of at most 32 bits.
unsigned long NumberMember(const nlohmann::json& object, const char* name, const std::string& place = "");
// Throws RequestError when the object has another member than these, or is not an object: a misspelt member must not pass
// for one that is missing.
void AllowMembers(const nlohmann::json& object, const std::vector<const char*>& names, const std::string& place = "");

// The number that a step of a path is. Throws RequestError with the status 404.
unsigned long NumberOfStep(const std::string& step);

}  // namespace devhost

#endif

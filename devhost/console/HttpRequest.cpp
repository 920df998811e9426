#include "devhost/console/HttpRequest.h"

#include <strings.h>

#include <map>
#include <nlohmann/json.hpp>

namespace devhost {

namespace {

// Beside the content. No script or style but the console's own files, no frame around it, no address of it for others.
constexpr char kPolicies[] =
    "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "X-Frame-Options: DENY\r\n"
    "Referrer-Policy: no-referrer\r\n"
    "Cross-Origin-Opener-Policy: same-origin\r\n"
    "Cross-Origin-Resource-Policy: same-origin\r\n"
    "Cache-Control: no-store\r\n";

const char* ReasonOf(unsigned status) {
  static const std::map<unsigned, const char*> reasons = {
      {200, "OK"},
      {400, "Bad Request"},
      {401, "Unauthorized"},
      {403, "Forbidden"},
      {404, "Not Found"},
      {405, "Method Not Allowed"},
      {408, "Request Timeout"},
      {409, "Conflict"},
      {412, "Precondition Failed"},
      {413, "Content Too Large"},
      {415, "Unsupported Media Type"},
      {417, "Expectation Failed"},
      {421, "Misdirected Request"},
      {422, "Unprocessable Content"},
      {431, "Request Header Fields Too Large"},
      {500, "Internal Server Error"},
      {503, "Service Unavailable"},
      {505, "HTTP Version Not Supported"},
  };
  const auto found = reasons.find(status);
  return found == reasons.end() ? "Status" : found->second;
}

}  // namespace

std::vector<std::string> HttpRequest::Values(std::string_view name) const {
  std::vector<std::string> values;
  for (const auto& [header, value] : headers) {
    if (header.size() == name.size() && ::strncasecmp(header.data(), name.data(), name.size()) == 0) {
      values.push_back(value);
    }
  }
  return values;
}

std::string HttpRequest::Value(std::string_view name) const {
  const std::vector<std::string> values = Values(name);
  return values.size() == 1 ? values.front() : "";
}

std::string HttpRequest::Query() const {
  const std::size_t mark = target.find('?');
  return mark == std::string::npos ? "" : target.substr(mark + 1);
}

HttpAnswer ErrorAnswer(unsigned status, std::string_view code, std::string_view message) {
  const nlohmann::ordered_json body = {{"error", {{"code", code}, {"message", message}}}};
  return {status, body.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)};
}

std::string HeadOf(const HttpAnswer& answer, bool closes, bool isStream) {
  std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " " + ReasonOf(answer.status) + "\r\n";
  head += "Content-Type: " + answer.type + "\r\n";
  if (!isStream) {
    head += "Content-Length: " + std::to_string(answer.body.size()) + "\r\n";
  }
  for (const auto& [name, value] : answer.headers) {
    head.append(name).append(": ").append(value).append("\r\n");
  }
  head += closes ? "Connection: close\r\n" : "";
  return head + kPolicies + "\r\n";
}

}  // namespace devhost

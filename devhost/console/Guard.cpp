#include "devhost/console/Guard.h"

#include <algorithm>

namespace devhost {

namespace {

constexpr std::string_view kTargetCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/_.-?=&";

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// The targets of the console need no escapes, so there are none to be understood in two ways.
bool IsOwnTarget(const std::string& target) {
  return StartsWith(target, "/") && target.find_first_not_of(kTargetCharacters) == std::string::npos &&
         target.find("..") == std::string::npos && target.find("/./") == std::string::npos &&
         std::count(target.begin(), target.end(), '?') <= 1;
}

bool HasBody(std::string_view method) {
  return method == "POST" || method == "PUT";
}

// "application/json", with or without the one parameter that is the same for everybody.
bool IsJson(std::string type) {
  type.erase(std::remove(type.begin(), type.end(), ' '), type.end());
  std::transform(type.begin(), type.end(), type.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; });
  return type == "application/json" || type == "application/json;charset=utf-8";
}

// Somebody has typed or opened the address of the page, from wherever: it holds no secret, and shows itself in no frame.
bool IsNavigation(const HttpRequest& head) {
  return head.method == "GET" && head.Path() == "/" && head.Value("Sec-Fetch-Mode") == "navigate" &&
         head.Value("Sec-Fetch-Dest") == "document";
}

}  // namespace

Guard::Guard(std::uint16_t port, const Token& token, bool isReadOnly)
    : m_port(std::to_string(port)), m_token(token), m_isReadOnly(isReadOnly) {}

GuardVerdict Guard::Check(const HttpRequest& head) const {
  GuardVerdict verdict;
  const std::string path = head.Path();
  const bool isApi = path == "/api" || StartsWith(path, "/api/");
  verdict.refusal = CheckForm(head);
  if (!verdict.refusal) {
    verdict.refusal = CheckSite(head, isApi);
  }
  if (verdict.refusal) {
    return verdict;
  }
  if (isApi) {
    CheckApi(head, verdict);
    return verdict;
  }
  verdict.asset = FindAsset(path);
  if (verdict.asset.text.empty()) {
    verdict.refusal = ErrorAnswer(404, "not-found", "the console has no such page; it starts at /");
  } else if (head.method != "GET" && head.method != "HEAD") {
    verdict.refusal = ErrorAnswer(405, "method", "a page can only be read");
    verdict.refusal->headers.emplace_back("Allow", "GET, HEAD");
  }
  return verdict;
}

// The form of the request, before anything in it is believed. The name of the host comes first: a page of another name that
// leads to this address (DNS rebinding) must learn nothing, not even what exists.
std::optional<HttpAnswer> Guard::CheckForm(const HttpRequest& head) const {
  const std::vector<std::string> hosts = head.Values("Host");
  if (hosts.size() != 1 || (hosts.front() != "127.0.0.1:" + m_port && hosts.front() != "localhost:" + m_port)) {
    return ErrorAnswer(421, "host", "this address is not the console's; open the one that it has printed");
  }
  if (!IsOwnTarget(head.target)) {
    return ErrorAnswer(400, "target", "the console has no such address; its addresses need no escapes");
  }
  const std::vector<std::string> lengths = head.Values("Content-Length");
  const bool isOdd = !lengths.empty() && (lengths.front().empty() || lengths.front().size() > 9 ||
                                          lengths.front().find_first_not_of("0123456789") != std::string::npos);
  if (lengths.size() > 1 || isOdd || !head.Values("Transfer-Encoding").empty()) {
    return ErrorAnswer(400, "length", "a request says the length of its body once, in Content-Length, and in no other way");
  }
  if (!head.Values("Expect").empty()) {
    return ErrorAnswer(417, "expect", "send the body without waiting");
  }
  return std::nullopt;
}

// Pages of others may send requests, but a browser says where they come from.
std::optional<HttpAnswer> Guard::CheckSite(const HttpRequest& head, bool isApi) const {
  for (const std::string& origin : head.Values("Origin")) {
    if (origin != "http://127.0.0.1:" + m_port && origin != "http://localhost:" + m_port) {
      return ErrorAnswer(403, "origin", "the console answers its own page and programs, and no page of others");
    }
  }
  for (const std::string& site : head.Values("Sec-Fetch-Site")) {
    if (site != "same-origin" && site != "none" && (isApi || !IsNavigation(head))) {
      return ErrorAnswer(403, "origin", "the console answers its own page and programs, and no page of others");
    }
  }
  return std::nullopt;
}

void Guard::CheckApi(const HttpRequest& head, GuardVerdict& verdict) const {
  const std::vector<std::string> tokens = head.Values("X-Devhost-Token");
  if (tokens.size() != 1 || !m_token.Is(tokens.front())) {
    verdict.isWrongToken = !tokens.empty();
    verdict.refusal = ErrorAnswer(
        401, "token", "the header X-Devhost-Token is missing or wrong; the console has printed its token at its start");
    return;
  }
  const std::string path = head.Path();
  if (StartsWith(path, std::string(kApiPrefix) + "/")) {
    verdict.match = FindRoute(head.method, std::string_view(path).substr(kApiPrefix.size()));
  }
  if (verdict.match.route != nullptr) {
    verdict.refusal = CheckChange(head, *verdict.match.route);
  } else if (verdict.match.allowed.empty()) {
    verdict.refusal = ErrorAnswer(404, "not-found", "there is no such route; docs/console-api.md lists all of them");
  } else {
    verdict.refusal = ErrorAnswer(405, "method", "this route has other methods: " + verdict.match.allowed);
    verdict.refusal->headers.emplace_back("Allow", verdict.match.allowed);
  }
}

std::optional<HttpAnswer> Guard::CheckChange(const HttpRequest& head, const Route& route) const {
  if (m_isReadOnly && route.access == Access::Change) {
    return ErrorAnswer(403, "read-only", "this console is read-only; start it without --read-only to change something");
  }
  const std::string length = head.Value("Content-Length");
  const unsigned long bytes = length.empty() ? 0 : std::stoul(length);
  if (bytes > kLongestBody) {
    return ErrorAnswer(413, "too-large", "a body has at most 1048576 bytes");
  }
  if (!HasBody(head.method) && bytes > 0) {
    return ErrorAnswer(400, "body", "a request with this method has no body");
  }
  if (HasBody(head.method) && !IsJson(head.Value("Content-Type"))) {
    return ErrorAnswer(415, "content-type", "the body of a request is JSON; say so with Content-Type: application/json");
  }
  return std::nullopt;
}

}  // namespace devhost

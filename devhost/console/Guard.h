#ifndef DEVHOST_CONSOLE_GUARD_H
#define DEVHOST_CONSOLE_GUARD_H

#include <cstdint>
#include <optional>
#include <string>

#include "devhost/console/Assets.h"
#include "devhost/console/HttpRequest.h"
#include "devhost/console/Routes.h"
#include "devhost/console/Token.h"

namespace devhost {

// The bounds of one request.
inline constexpr std::size_t kLongestHead = std::size_t{8} * 1024;
inline constexpr std::size_t kLongestBody = std::size_t{1024} * 1024;

// What the guard says about a request.
struct GuardVerdict {
  std::optional<HttpAnswer> refusal;  // when there is one, nothing below counts, and the connection ends with it
  bool isWrongToken = false;          // of a refusal: somebody tried a token
  Asset asset;                        // a file of the page, or
  RouteMatch match;                   // what is asked for
};

// Decides about each request before anything else does, from its head alone: the body of a refused request is not read.
// Whatever is not plainly the console's own page, or a program that has the token, is refused.
class Guard {
 public:
  // `port` is where the console listens. The token is borrowed.
  Guard(std::uint16_t port, const Token& token, bool isReadOnly);

  GuardVerdict Check(const HttpRequest& head) const;

 private:
  std::optional<HttpAnswer> CheckForm(const HttpRequest& head) const;
  std::optional<HttpAnswer> CheckSite(const HttpRequest& head, bool isApi) const;
  std::optional<HttpAnswer> CheckChange(const HttpRequest& head, const Route& route) const;
  void CheckApi(const HttpRequest& head, GuardVerdict& verdict) const;

  const std::string m_port;
  const Token& m_token;
  const bool m_isReadOnly;
};

}  // namespace devhost

#endif

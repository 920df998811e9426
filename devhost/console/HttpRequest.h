#ifndef DEVHOST_CONSOLE_HTTP_REQUEST_H
#define DEVHOST_CONSOLE_HTTP_REQUEST_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace devhost {

// One request as it came over the network. Nothing in it has been checked but its grammar.
struct HttpRequest {
  // The values of a header, whatever the case of its name, in the order in which they came.
  std::vector<std::string> Values(std::string_view name) const;
  // The value of a header that stands there once; "" when it does not stand there, or more than once.
  std::string Value(std::string_view name) const;
  // The target up to its query, and its query without the question mark.
  std::string Path() const { return target.substr(0, target.find('?')); }
  std::string Query() const;

  std::string method;
  std::string target;
  unsigned version = 11;  // 10 or 11 for HTTP/1.0 and HTTP/1.1
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
};

// What becomes of it.
struct HttpAnswer {
  unsigned status = 200;
  std::string body;
  std::string type = "application/json";
  std::vector<std::pair<std::string, std::string>> headers = {};  // beside those that every answer has
};

// An answer in the form of all errors. `code` is for programs, `message` says what, where and what to do.
HttpAnswer ErrorAnswer(unsigned status, std::string_view code, std::string_view message);

// The head of an answer with everything that every answer of the console has, errors too: length, policies, no caching.
// `isStream` is for a body without a length, which ends with the connection; `closes` says that the connection ends.
std::string HeadOf(const HttpAnswer& answer, bool closes, bool isStream = false);

}  // namespace devhost

#endif

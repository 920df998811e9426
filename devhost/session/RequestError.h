#ifndef DEVHOST_SESSION_REQUEST_ERROR_H
#define DEVHOST_SESSION_REQUEST_ERROR_H

#include <stdexcept>
#include <string>

namespace devhost {

// A request that is not done: the status of HTTP that fits, a word for programs, and for people what is wrong and what is
// allowed. The message quotes nothing that somebody has typed, since that may be a secret.
class RequestError : public std::runtime_error {
 public:
  RequestError(int errorStatus, const char* errorCode, const std::string& message)
      : std::runtime_error(message), status(errorStatus), code(errorCode) {}

  int status;
  const char* code;
};

// The device has moved since the request's `If-Match` was given.
class StaleBase : public RequestError {
 public:
  explicit StaleBase(const std::string& now)
      : RequestError(412, "stale", "the device or its file was changed since; look at it again"), base(now) {}

  std::string base;  // of the device as it is now
};

// The request is not of the form that all have.
inline RequestError BadRequest(const std::string& message) {
  return {400, "bad-request", message};
}

// The body is not what is asked for.
inline RequestError WrongBody(const std::string& message) {
  return {422, "wrong-body", message};
}

inline RequestError NotFound(const std::string& message) {
  return {404, "not-found", message};
}

}  // namespace devhost

#endif

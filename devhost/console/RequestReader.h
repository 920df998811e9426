#ifndef DEVHOST_CONSOLE_REQUEST_READER_H
#define DEVHOST_CONSOLE_REQUEST_READER_H

#include <memory>
#include <optional>
#include <string_view>

#include "devhost/console/HttpRequest.h"

namespace devhost {

// Reads the requests of one connection from its bytes, one after the other, with the parser of a library. It knows no
// socket. What it refuses, it refuses for good: nobody can tell where the next request would begin.
class RequestReader {
 public:
  enum class State {
    Head,  // it needs more bytes of a head
    Body,  // there is a head to look at; it reads the body on Resume
    Done,  // the request is complete
    Wrong  // see Refusal
  };

  RequestReader();
  ~RequestReader();

  // Takes bytes as they come, and returns the state after them. At most kLongestHead and kLongestBody of one request are
  // kept, and what has come of the next one.
  State Put(std::string_view bytes);
  // After Body: reads the body as well.
  State Resume();
  // After Done: begins with the next request, of which bytes may have come.
  State Next();

  State GetState() const;
  // Whether bytes of a request have come that is not complete.
  bool HasBegun() const;
  // From Body on: the request. Its body is complete with Done.
  const HttpRequest& Current() const;
  // Whether the client wants the connection to stay after this request.
  bool KeepsAlive() const;
  // After Wrong: what to answer.
  HttpAnswer Refusal() const;

 private:
  struct Parsing;
  std::unique_ptr<Parsing> m_parsing;
};

}  // namespace devhost

#endif

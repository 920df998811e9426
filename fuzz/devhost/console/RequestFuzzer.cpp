// Any bytes from a client: they are read in the same way however they are cut, and the guard lets nothing through that it
// should not. {token} in the input stands for the token.
#include <algorithm>
#include <string>
#include <vector>

#include "devhost/console/Guard.h"
#include "devhost/console/RequestReader.h"
#include "fuzz/support/Input.h"

namespace {

using devhost::Guard;
using devhost::GuardVerdict;
using devhost::HttpRequest;
using devhost::RequestReader;
using State = RequestReader::State;

constexpr std::uint16_t kPort = 4711;

std::string WithToken(std::string text, const std::string& token) {
  constexpr std::string_view kPlace = "{token}";
  for (std::size_t at = text.find(kPlace); at != std::string::npos; at = text.find(kPlace, at + token.size())) {
    text.replace(at, kPlace.size(), token);
  }
  return text;
}

// The requests that a client has sent, and whether the rest was refused.
struct Reading {
  std::vector<HttpRequest> requests;
  unsigned refusal = 0;
};

// Takes all complete requests out of the reader.
void Collect(RequestReader& reader, Reading& reading) {
  while (reader.GetState() == State::Body && reader.Resume() == State::Done) {
    reading.requests.push_back(reader.Current());
    reader.Next();
  }
}

Reading Read(const std::string& bytes, std::size_t piece) {
  RequestReader reader;
  Reading reading;
  for (std::size_t start = 0; start < bytes.size(); start += piece) {
    reader.Put(std::string_view(bytes).substr(start, piece));
    Collect(reader, reading);
    // A request whose head alone has come is read on.
    if (reader.GetState() == State::Done) {
      reading.requests.push_back(reader.Current());
      reader.Next();
      Collect(reader, reading);
    }
  }
  reading.refusal = reader.GetState() == State::Wrong ? reader.Refusal().status : 0;
  return reading;
}

bool AreEqual(const HttpRequest& a, const HttpRequest& b) {
  return a.method == b.method && a.target == b.target && a.version == b.version && a.headers == b.headers &&
         a.body == b.body;
}

void CheckRefusal(const devhost::HttpAnswer& refusal) {
  fuzz::Require(refusal.status >= 400 && refusal.status < 500, "a refusal with status " + std::to_string(refusal.status));
  const std::string head = HeadOf(refusal, true);
  fuzz::Require(head.find("\r\n\r\n") == head.size() - 4, "a head with an end in its middle");
}

void CheckPassed(const HttpRequest& request, const GuardVerdict& verdict, const devhost::Token& token, bool isReadOnly) {
  const std::string host = request.Value("Host");
  fuzz::Require(host == "127.0.0.1:4711" || host == "localhost:4711", "a foreign host: " + host);
  fuzz::Require(request.target.find('%') == std::string::npos && request.target.front() == '/', "target " + request.target);
  fuzz::Require(request.Values("Transfer-Encoding").empty() && request.Values("Content-Length").size() <= 1, "two lengths");
  const std::string origin = request.Value("Origin");
  fuzz::Require(
      origin.empty() || origin == "http://" + host || origin == "http://127.0.0.1:4711" || origin == "http://localhost:4711",
      "a foreign origin: " + origin);
  if (verdict.match.route == nullptr) {
    fuzz::Require(!verdict.asset.text.empty() && (request.method == "GET" || request.method == "HEAD"),
                  "neither page nor route");
    return;
  }
  const devhost::Route& route = *verdict.match.route;
  fuzz::Require(token.Is(request.Value("X-Devhost-Token")), "no token");
  fuzz::Require(route.method == request.method, "another method");
  fuzz::Require(!isReadOnly || route.access != devhost::Access::Change, "a change where it is read-only");
  for (const std::string& number : verdict.match.numbers) {
    fuzz::Require(!number.empty() && number.find_first_not_of("0123456789") == std::string::npos, "not a number: " + number);
  }
  fuzz::Require(request.body.empty() || request.Value("Content-Type").size() >= 16, "a body of no type");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const devhost::Token token;
  if (size == 0) {
    return 0;
  }
  const std::string bytes = WithToken(std::string(reinterpret_cast<const char*>(data) + 1, size - 1), token.Text());
  const std::size_t piece = std::max<std::size_t>(1, data[0] % 64U);
  const Reading whole = Read(bytes, std::max<std::size_t>(1, bytes.size()));
  const Reading cut = Read(bytes, piece);
  fuzz::Require(whole.requests.size() == cut.requests.size() && whole.refusal == cut.refusal, "cut, it is read otherwise");
  for (std::size_t i = 0; i < whole.requests.size(); ++i) {
    const HttpRequest& request = whole.requests[i];
    fuzz::Require(AreEqual(request, cut.requests[i]), "cut, a request is read otherwise");
    const bool isReadOnly = data[0] >= 128;
    const GuardVerdict verdict = Guard(kPort, token, isReadOnly).Check(request);
    if (verdict.refusal) {
      CheckRefusal(*verdict.refusal);
    } else {
      CheckPassed(request, verdict, token, isReadOnly);
    }
  }
  return 0;
}

#include "devhost/console/RequestReader.h"

#include <boost/beast/http.hpp>
#include <string>

#include "devhost/console/Guard.h"

namespace devhost {

namespace http = boost::beast::http;

struct RequestReader::Parsing {
  using Parser = http::request_parser<http::string_body>;

  Parsing() { Begin(); }

  void Begin() {
    parser.emplace();
    parser->header_limit(kLongestHead);
    parser->body_limit(kLongestBody);
    request = {};
    state = State::Head;
  }

  // The parser gets the whole head at once, and nothing else: the same bytes mean the same however they come. So the length
  // is checked here.
  void ReadHead() {
    constexpr std::string_view kEnd = "\r\n\r\n";
    const std::size_t end = bytes.find(kEnd);
    const std::size_t length = end == std::string::npos ? bytes.size() : end + kEnd.size();
    if (length > kLongestHead) {
      Refuse(ErrorAnswer(431, "too-large", "the head of a request has at most 8192 bytes"));
    } else if (end != std::string::npos) {
      Feed(length);
      if (state != State::Wrong && parser->is_header_done()) {
        TakeHead();
      } else if (state != State::Wrong) {
        Refuse(ErrorAnswer(400, "http", "this is not a request of HTTP/1.1: its first line is cut"));
      }
    }
  }

  void TakeHead() {
    const auto& message = parser->get();
    request.method = std::string(message.method_string());
    request.target = std::string(message.target());
    request.version = message.version();
    for (const auto& field : message) {
      request.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
    }
    state = State::Body;
  }

  void ReadBody() {
    parser->eager(true);
    if (!parser->is_done() && !bytes.empty()) {
      Feed(bytes.size());
    }
    if (state != State::Wrong && parser->is_done()) {
      request.body = std::move(parser->get().body());
      state = State::Done;
    }
  }

  // Gives the parser what it takes of the first bytes.
  void Feed(std::size_t count) {
    boost::beast::error_code error;
    const std::size_t taken = parser->put(boost::asio::buffer(bytes, count), error);
    bytes.erase(0, taken);
    if (!error || error == http::error::need_more) {
      return;
    }
    if (error == http::error::body_limit) {
      Refuse(ErrorAnswer(413, "too-large", "a body has at most 1048576 bytes"));
    } else {
      Refuse(ErrorAnswer(400, "http", "this is not a request of HTTP/1.1: " + error.message()));
    }
  }

  void Refuse(HttpAnswer answer) {
    refusal = std::move(answer);
    state = State::Wrong;
    bytes.clear();
  }

  std::string bytes;  // that came and were not parsed
  std::optional<Parser> parser;
  HttpRequest request;
  HttpAnswer refusal;
  State state = State::Head;
  bool readsBody = false;
};

RequestReader::RequestReader() : m_parsing(std::make_unique<Parsing>()) {}
RequestReader::~RequestReader() = default;

RequestReader::State RequestReader::Put(std::string_view bytes) {
  if (m_parsing->state == State::Wrong) {
    return State::Wrong;
  }
  m_parsing->bytes.append(bytes);
  if (m_parsing->state == State::Head) {
    m_parsing->ReadHead();
  } else if (m_parsing->state == State::Body && m_parsing->readsBody) {
    m_parsing->ReadBody();
  }
  return m_parsing->state;
}

RequestReader::State RequestReader::Resume() {
  m_parsing->readsBody = true;
  if (m_parsing->state == State::Body) {
    m_parsing->ReadBody();
  }
  return m_parsing->state;
}

RequestReader::State RequestReader::Next() {
  if (m_parsing->state == State::Done) {
    m_parsing->readsBody = false;
    m_parsing->Begin();
    if (!m_parsing->bytes.empty()) {
      m_parsing->ReadHead();
    }
  }
  return m_parsing->state;
}

RequestReader::State RequestReader::GetState() const {
  return m_parsing->state;
}

bool RequestReader::HasBegun() const {
  return m_parsing->state == State::Body || (m_parsing->state == State::Head && !m_parsing->bytes.empty());
}

const HttpRequest& RequestReader::Current() const {
  return m_parsing->request;
}

bool RequestReader::KeepsAlive() const {
  return m_parsing->parser->keep_alive();
}

HttpAnswer RequestReader::Refusal() const {
  return m_parsing->refusal;
}

}  // namespace devhost

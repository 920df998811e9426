#include "devhost/console/Front.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "devhost/console/BoundedJson.h"

namespace devhost {

namespace {

using Json = nlohmann::ordered_json;

// An event that alone would push the others out of the ring is named instead.
constexpr std::size_t kLongestEvent = std::size_t{256} * 1024;

std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string Text(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

const char* NameOf(HostLink::State state) {
  switch (state) {
    case HostLink::State::Starting:
      return "starting";
    case HostLink::State::Up:
      return "up";
    case HostLink::State::Busy:
      return "busy";
    case HostLink::State::Ended:
      break;
  }
  return "ended";
}

// a=b&c=d as an object; nothing when it is not of that form, or has a name twice.
std::optional<Json> QueryOf(std::string_view query) {
  Json values = Json::object();
  while (!query.empty()) {
    const std::string_view part = query.substr(0, query.find('&'));
    query.remove_prefix(std::min(part.size() + 1, query.size()));
    const std::size_t sign = part.find('=');
    const std::string name(part.substr(0, sign));
    if (sign == std::string_view::npos || name.empty() || values.contains(name)) {
      return std::nullopt;
    }
    values[name] = part.substr(sign + 1);
  }
  return values;
}

// The tag of If-Match with or without its quotes.
std::string WithoutQuotes(const std::string& tag) {
  const bool isQuoted = tag.size() >= 2 && tag.front() == '"' && tag.back() == '"';
  return isQuoted ? tag.substr(1, tag.size() - 2) : tag;
}

}  // namespace

Front::Front(FrontOptions options, std::function<void()> onEvents, std::function<void(std::string_view)> onErrors)
    : m_options(std::move(options)),
      m_onEvents(std::move(onEvents)),
      m_onErrors(std::move(onErrors)),
      m_link(m_options.program, m_options.words, *this) {}

std::uint64_t Front::Handle(const HttpRequest& request, const RouteMatch& match, Reply reply) {
  if (match.route->by == Answerer::Host) {
    return AskHost(request, match, std::move(reply));
  }
  if (match.route->path == "/session") {
    reply(Session());
  } else if (match.route->path == "/activity") {
    reply({200, m_activity.AsJson(Now())});
  } else if (m_options.isReadOnly && m_link.GetState() == HostLink::State::Up) {
    // The daemons that it keeps would end with it.
    reply(ErrorAnswer(403, "read-only",
                      "this console is read-only, and its host is up; it is restarted only where it hangs or has ended"));
  } else {
    m_link.Restart(HostLink::Clock::now());
    reply({200, "{}"});
  }
  return 0;
}

HttpAnswer Front::Session() const {
  const std::optional<HostLink::Job> job = m_link.CurrentJob();
  Json host = {
      {"state", NameOf(m_link.GetState())}, {"reason", m_link.Reason()}, {"call", m_link.LongCall()}, {"job", nullptr}};
  if (job) {
    host["job"] = {{"method", job->method}, {"path", job->path}, {"since", job->since}};
  }
  return {200, Text({{"version", m_options.version},
                     {"contract", 1},
                     {"project", m_options.project},
                     {"readOnly", m_options.isReadOnly},
                     {"showsSecrets", m_options.showsSecrets},
                     {"host", host}})};
}

std::uint64_t Front::AskHost(const HttpRequest& request, const RouteMatch& match, Reply reply) {
  const std::optional<Json> query = QueryOf(request.Query());
  if (!query) {
    reply(ErrorAnswer(400, "query", "a query is NAME=VALUE&NAME=VALUE, with each name once"));
    return 0;
  }
  Json body;
  if (match.route->access != Access::Read && request.method != "DELETE") {
    body = request.body.empty() ? Json::object() : ParseBounded(request.body, kBodyLevels);
    if (!body.is_object()) {
      reply(ErrorAnswer(422, "body",
                        "the body is not a JSON object, or nests deeper than " + std::to_string(kBodyLevels) + " levels"));
      return 0;
    }
  }
  HostLink::Question question;
  question.method = request.method;
  question.path = request.Path().substr(kApiPrefix.size());
  question.rest = "\"query\":" + Text(*query) + ",\"ifMatch\":" + Text(WithoutQuotes(request.Value("If-Match"))) +
                  ",\"body\":" + Text(body);
  const bool isDevice = match.route->path.substr(0, 13) == "/devices/{id}";
  const std::uint64_t device = isDevice ? std::stoull(match.numbers.at(0)) : 0;
  return m_link.Ask(std::move(question), [this, isDevice, device, reply = std::move(reply)](HttpAnswer answer) {
    if (isDevice && answer.status < 400) {
      m_activity.OnRequest(device, Now());
    }
    reply(std::move(answer));
  });
}

void Front::OnEvent(Json& event) {
  m_activity.OnEvent(event, Now());
  AddEvent(event);
}

void Front::OnState() {
  Json event = {{"kind", "host"}, {"state", NameOf(m_link.GetState())}, {"reason", m_link.Reason()}};
  AddEvent(event);
}

void Front::AddEvent(Json& event) {
  event["n"] = m_events.NextNumber();
  event["time"] = Now();
  std::string text = Text(event);
  if (text.size() > kLongestEvent) {
    text = Text({{"kind", "omitted"}, {"bytes", text.size()}, {"n", m_events.NextNumber()}, {"time", Now()}});
  }
  m_events.Add(text);
  m_onEvents();
}

}  // namespace devhost

#include "devhost/session/Session.h"

#include <exception>
#include <map>
#include <new>
#include <nlohmann/json.hpp>

#include "devhost/console/Routes.h"
#include "devhost/session/RequestError.h"

namespace devhost {

using nlohmann::ordered_json;

namespace {

using Work = ordered_json (*)(Session::Parts&, const Request&);

// The member of a part that does the work.
template <auto kPart, auto kWork>
ordered_json Do(Session::Parts& parts, const Request& request) {
  return ((parts.*kPart).*kWork)(request);
}

// Who does the work of a route, by its method and path.
const std::map<std::string, Work>& Works() {
  using P = Session::Parts;
  static const std::map<std::string, Work> kWorks = {
      {"GET /devices", Do<&P::devices, &Devices::List>},
      {"GET /devices/{id}", Do<&P::devices, &Devices::Show>},
      {"PUT /devices/{id}/managed", Do<&P::devices, &Devices::Manage>},
      {"DELETE /devices/{id}/managed", Do<&P::devices, &Devices::GiveUp>},
      {"POST /devices/{id}/actions", Do<&P::devices, &Devices::Act>},
      {"POST /devices/{id}/advise", Do<&P::copies, &Copies::Advise>},
      {"GET /devices/{id}/file", Do<&P::copies, &Copies::File>},
      {"GET /devices/{id}/findings", Do<&P::copies, &Copies::Findings>},
      {"GET /devices/{id}/history", Do<&P::copies, &Copies::History>},
      {"GET /devices/{id}/history/{number}", Do<&P::copies, &Copies::Compare>},
      {"POST /devices/{id}/preview", Do<&P::changes, &Changes::Preview>},
      {"PUT /devices/{id}/settings", Do<&P::changes, &Changes::Apply>},
      {"POST /devices/{id}/undo", Do<&P::changes, &Changes::Undo>},
      {"POST /devices/{id}/undo/preview", Do<&P::changes, &Changes::PreviewUndo>},
      {"GET /devices/{id}/effective", Do<&P::changes, &Changes::Effective>},
      {"POST /devices/{id}/test-trap", Do<&P::changes, &Changes::TestTrap>},
      {"GET /devices/{id}/drift", Do<&P::changes, &Changes::FindDrift>},
      {"GET /variables", Do<&P::conversation, &Conversation::Variables>},
      {"PUT /variables/{device}/{variable}", Do<&P::conversation, &Conversation::SetVariable>},
      {"GET /commands", Do<&P::conversation, &Conversation::Commands>},
      {"POST /command", Do<&P::conversation, &Conversation::Command>},
      {"POST /event", Do<&P::conversation, &Conversation::Event>}};
  return kWorks;
}

}  // namespace

Session::Session(const SessionMeans& means, const Project& project, StateStore& states, Masker& secrets, Channel& channel)
    : m_means(means),
      m_secrets(secrets),
      m_channel(channel),
      m_host(project, states, secrets, channel, means.isReadOnly),
      m_parts(means, m_host, secrets, channel) {}

void Session::Start() {
  m_host.Start();
  m_channel.Ready();
}

ordered_json Session::Do(const Request& request) {
  const RouteMatch match = FindRoute(request.method, request.path);
  if (match.route == nullptr && !match.allowed.empty()) {
    throw RequestError(405, "method", "this path has no such method");
  }
  if (match.route == nullptr || match.route->by != Answerer::Host) {
    throw NotFound("there is no such path");
  }
  if (m_means.isReadOnly && match.route->access == Access::Change) {
    throw RequestError(403, "read-only", "this session only reads; start it without --read-only to change something");
  }
  return Works().at(request.method + " " + std::string(match.route->path))(m_parts, request);
}

void Session::Play(const std::string& line) {
  Request request;
  try {
    ReadRequest(line, request);
    m_channel.Answer(request.id, 200, Do(request));
  } catch (const StaleBase& stale) {
    m_channel.Answer(request.id, stale.status,
                     {{"error", {{"code", stale.code}, {"message", stale.what()}}}, {"base", stale.base}});
  } catch (const RequestError& error) {
    m_channel.Refuse(request.id, error.status, error.code, error.what());
  } catch (const SnapshotError& error) {
    m_channel.Refuse(request.id, 409, "snapshots", m_secrets.Text(error.what()));
  } catch (const HostError& error) {
    m_channel.Refuse(request.id, 500, "driver-failed", m_secrets.Text(error.what()));
  } catch (const std::bad_alloc&) {
    m_channel.Refuse(request.id, 500, "no-memory", "out of memory");
  } catch (const std::exception& error) {
    m_channel.Refuse(request.id, 500, "failed", m_secrets.Text(error.what(), WrittenBy::Others));
  }
}

}  // namespace devhost

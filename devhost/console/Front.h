#ifndef DEVHOST_CONSOLE_FRONT_H
#define DEVHOST_CONSOLE_FRONT_H

#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "devhost/console/Activity.h"
#include "devhost/console/EventRing.h"
#include "devhost/console/HostLink.h"
#include "devhost/console/HttpRequest.h"
#include "devhost/console/Routes.h"

namespace devhost {

// What a console is.
struct FrontOptions {
  std::string version;
  std::string project;  // what the page shows as its name
  bool isReadOnly = false;
  bool showsSecrets = false;
  std::string program;             // the host process
  std::vector<std::string> words;  // its command line, the program's name first
};

// The console without its network: answers requests that the guard has let through, asks the host process where it cannot
// answer, and keeps the events. On one thread.
class Front : private HostLink::Observer {
 public:
  using Reply = HostLink::Reply;

  // `onEvents` is called after new events; `onErrors` gets what the host process writes to standard error. Nothing is
  // started.
  Front(FrontOptions options, std::function<void()> onEvents, std::function<void(std::string_view)> onErrors);

  // Answers the request, at once or later, but for the stream of events. Returns a number for Drop, or 0.
  std::uint64_t Handle(const HttpRequest& request, const RouteMatch& match, Reply reply);
  // The client has gone.
  void Drop(std::uint64_t number) { m_link.Drop(number); }

  const EventRing& Events() const { return m_events; }
  HostLink& Link() { return m_link; }

 private:
  void OnEvent(nlohmann::ordered_json& event) override;
  void OnState() override;
  void OnErrors(std::string_view text) override { m_onErrors(text); }

  HttpAnswer Session() const;
  std::uint64_t AskHost(const HttpRequest& request, const RouteMatch& match, Reply reply);
  void AddEvent(nlohmann::ordered_json& event);

  const FrontOptions m_options;
  const std::function<void()> m_onEvents;
  const std::function<void(std::string_view)> m_onErrors;
  EventRing m_events;
  Activity m_activity;
  HostLink m_link;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_SESSION_CONVERSATION_H
#define DEVHOST_SESSION_CONVERSATION_H

#include <nlohmann/json_fwd.hpp>

#include "devhost/session/LiveHost.h"
#include "devhost/session/Request.h"

namespace devhost {

// Requests about variables, commands and events: what a tool says to the host as it is. Each returns the body of the answer,
// and throws RequestError, or HostError for what a driver did.
class Conversation {
 public:
  // All outlive it.
  Conversation(LiveHost& host, Masker& secrets, Channel& channel) : m_host(host), m_secrets(secrets), m_channel(channel) {}

  nlohmann::ordered_json Variables(const Request& request);
  nlohmann::ordered_json SetVariable(const Request& request);
  nlohmann::ordered_json Commands(const Request& request);
  nlohmann::ordered_json Command(const Request& request);
  nlohmann::ordered_json Event(const Request& request);

 private:
  LiveHost& m_host;
  Masker& m_secrets;
  Channel& m_channel;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_SESSION_SESSION_H
#define DEVHOST_SESSION_SESSION_H

#include <string>
#include <vector>

#include "devhost/project/Project.h"
#include "devhost/session/Changes.h"
#include "devhost/session/Channel.h"
#include "devhost/session/Conversation.h"
#include "devhost/session/Copies.h"
#include "devhost/session/Devices.h"
#include "devhost/session/LiveHost.h"
#include "devhost/session/Request.h"
#include "devhost/state/StateStore.h"

namespace devhost {

// What a session is about.
struct SessionMeans {
  std::string projectFile;
  std::string stateFolder;  // "" when states are kept for as long as the session lasts
  bool isReadOnly = false;
};

// A session with the drivers of a project: each line is a request, and what becomes of it goes to the channel. One thread,
// one request at a time.
class Session {
 public:
  // Those that do the work of requests, each with its subject.
  struct Parts {
    // All arguments outlive it.
    Parts(const SessionMeans& means, LiveHost& host, Masker& secrets, Channel& channel)
        : conversation(host, secrets, channel),
          copies(means, host, secrets),
          devices(host, copies, secrets),
          changes(host, copies, secrets, channel) {}

    Conversation conversation;
    Copies copies;
    Devices devices;
    Changes changes;
  };

  // All arguments outlive it.
  Session(const SessionMeans& means, const Project& project, StateStore& states, Masker& secrets, Channel& channel);

  // Loads the drivers and says so to the channel. Throws HostError, with nothing left loaded.
  void Start();
  // Does what a line asks for and answers it. Never throws: whatever a request leads to, the session goes on.
  void Play(const std::string& line);
  // Unloads the drivers, which give their states. Returns which were not kept and why, a line each. Throws HostError.
  std::vector<std::string> Stop() { return m_host.Stop(); }

 private:
  nlohmann::ordered_json Do(const Request& request);

  const SessionMeans& m_means;
  Masker& m_secrets;
  Channel& m_channel;
  LiveHost m_host;
  Parts m_parts;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_SESSION_CHANGES_H
#define DEVHOST_SESSION_CHANGES_H

#include <nlohmann/json_fwd.hpp>

#include "devhost/operations/Probe.h"
#include "devhost/session/Copies.h"

namespace devhost {

class LiveLife;

// Requests that plan or make changes of a device, or hold it against its daemon, by devhost/operations/ in the life that the
// device has in the session. Each returns the body of the answer, and throws RequestError and what the operations throw.
class Changes {
 public:
  // All outlive it.
  Changes(LiveHost& host, Copies& copies, Masker& secrets, Channel& channel)
      : m_host(host), m_copies(copies), m_secrets(secrets), m_channel(channel) {}

  nlohmann::ordered_json Preview(const Request& request);
  nlohmann::ordered_json Apply(const Request& request);
  nlohmann::ordered_json PreviewUndo(const Request& request);
  nlohmann::ordered_json Undo(const Request& request);
  nlohmann::ordered_json Effective(const Request& request);
  nlohmann::ordered_json TestTrap(const Request& request);
  nlohmann::ordered_json FindDrift(const Request& request);

 private:
  // Settings in place of those of the device, as an edit or a snapshot has them.
  Change ChangeOf(const Request& request);
  // The plan, with findings that may be shown.
  devhost::Plan PlanIn(LiveLife& life, const Change& change);
  nlohmann::ordered_json Plan(const Change& change);
  // Throws RequestError unless the device is as the request has found it.
  nlohmann::ordered_json Make(const Change& change, const Request& request);
  ProbeMeans MeansFor(const Target& target);
  ProbeReport Probe(const Target& target, bool sendsTraps, bool answeredBefore = false);
  void Say(const Change& change, const char* step, const char* state, const std::string& text = "");

  LiveHost& m_host;
  Copies& m_copies;
  Masker& m_secrets;
  Channel& m_channel;
};

}  // namespace devhost

#endif

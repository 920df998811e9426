#ifndef DEVHOST_SESSION_CHANNEL_H
#define DEVHOST_SESSION_CHANNEL_H

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "devhost/secrets/Masker.h"
#include "devhost/system/Output.h"

namespace devhost {

struct Occurrence;

// The lines that leave a session, one JSON object each. What goes in through `Event(Occurrence)` is masked here; all else
// holds no secret already. Never throws for an output that has failed: see Output.
class Channel {
 public:
  // Longer texts of an event are cut there, with their size behind: the front keeps only some of all events.
  static constexpr std::size_t kLongestText = std::size_t{64} * 1024;

  // Both outlive the channel.
  Channel(Output& output, Masker& secrets) : m_output(output), m_secrets(secrets) {}

  // What happened in the host, after its secrets are learnt.
  void Event(const Occurrence& occurrence);
  // Another event, by its members.
  void Event(const nlohmann::ordered_json& event);
  void Answer(const nlohmann::json& id, int status, const nlohmann::ordered_json& body);
  // The same for an error.
  void Refuse(const nlohmann::json& id, int status, const std::string& code, const std::string& message);
  void Ready();
  void Failed(const std::string& reason);

 private:
  void Write(const nlohmann::ordered_json& line);

  Output& m_output;
  Masker& m_secrets;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_OPERATIONS_PROBE_ITEMS_H
#define DEVHOST_OPERATIONS_PROBE_ITEMS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devhost/operations/Explanation.h"
#include "devhost/operations/Probe.h"
#include "devhost/secrets/Masker.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

// What a daemon has answered to all that a probe asks with the configured communities.
struct Answers {
  SnmpReply byRead;  // of the read community: contact, name, location, and the AgentX socket where it can be asked for
  SnmpReply byWrite;
  SnmpReply set;  // by the write community
};

// What the questions of a probe have in common.
struct Question {
  const Answers& answers;
  const XmlElement& settings;  // a device settings element
  const XmlElement& shown;     // the same as it may be shown
  const Explanation& file;
  const Patience& patience;
  Masker& masker;
};

// A daemon that has answered.
struct ReachedDaemon {
  SocketAddress address;
  bool hasOwnAgentX = false;
};

// Finds the daemon of a device with that file and sees whether it answers. Nothing when it does not; the messages of the
// report then say why. Throws SnmpError for a wrong address.
std::optional<ReachedDaemon> Reach(const Target& target, const ProbeMeans& means, const std::string& file,
                                   ProbeReport& report);

// Fills the verdict of a report by those of its items.
void Conclude(ProbeReport& report);

// The text of a setting; "" when it is missing.
std::string SettingText(const XmlElement& settings, std::string_view name);

// The community as the agent writes it and the daemon reads it: quotes around one with a space are not part of it.
std::string AskedCommunity(const std::string& text);

// Whether a community is set, without which nobody can ask.
bool HasCommunity(const XmlElement& settings);

// A community, "" for none, and what for.
struct Access {
  std::string community;
  bool writes = false;
};
// Whether the daemon lets somebody in, for each of them. All are asked at once. Throws SnmpError.
std::vector<bool> AskAccess(const SocketAddress& daemon, const std::vector<Access>& accesses, const Patience& patience);

// Asks the daemon all that the functions below look at, at once. Throws SnmpError.
Answers AskDaemon(const SocketAddress& daemon, const XmlElement& settings, const Explanation& file,
                  const Patience& patience);

// Contact, name and location, read with the first community that works.
std::vector<ProbeItem> ProbeTexts(const Question& question);
// The communities that are configured.
std::vector<ProbeItem> ProbeCommunities(const Question& question);
// The AgentX socket that the file names, by the daemon's own list of what listens on its machine.
ProbeItem ProbeAgentX(const Question& question);
// A test trap to each target.
std::vector<ProbeItem> ProbeTargets(const Question& question);

}  // namespace devhost

#endif

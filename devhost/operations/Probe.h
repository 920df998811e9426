#ifndef DEVHOST_OPERATIONS_PROBE_H
#define DEVHOST_OPERATIONS_PROBE_H

#include <chrono>
#include <string>
#include <vector>

#include "devhost/operations/Apply.h"
#include "devhost/snmp/SnmpClient.h"

namespace devhost {

struct DeviceLook;

// How to ask a daemon.
struct ProbeMeans {
  std::string address;     // HOST:PORT; "" for what the project says
  bool sendsTraps = true;  // a test trap to each target
  Patience patience = {};
  std::string advice = "--address HOST:PORT names one";  // where the project names no daemon; "" for none
  // How long a daemon may take to answer again after a change: its restart command need not wait for it.
  std::chrono::milliseconds comeback = std::chrono::seconds(5);
};

// One thing that was asked.
struct ProbeItem {
  enum class Verdict {
    Good,
    Differs,
    NotAsked  // nothing is configured, or it cannot be asked from here
  };

  std::string name;  // "contact", "read community", "trap to 192.0.2.5"
  Verdict verdict = Verdict::Good;
  std::string configured;  // as it may be shown; "" when it is not set, and for what has no value
  std::string served;      // the daemon's value; for the others, what was found, in words
  std::string reason;      // why they differ, when the file explains it; or ""
};

// What a daemon serves beside what is configured. All texts are masked unless secrets are to be shown.
struct ProbeReport {
  enum class Verdict {
    AsConfigured,
    Differs,
    Unknown,  // there is no daemon to ask, or it does not answer
    Gone      // it answered before a change, and does not answer after it
  };

  Verdict verdict = Verdict::Unknown;
  std::string address;                // of the daemon, "127.0.0.1:161"; "" when there is none
  std::vector<ProbeItem> items;       // in the order of the settings
  std::vector<std::string> messages;  // what else there is to say, a line each; why nobody knows comes last
};

// Whether the daemon is known not to serve what is configured.
bool IsWrong(ProbeReport::Verdict verdict);

// Asks the daemon of a device over SNMP what it serves: contact, name and location, whether the communities work, whether
// somebody listens on the AgentX socket. Sends a test trap to each target, from this machine.
//
// The daemon is not changed: the write community is tried on sysDescr, which no SNMP agent lets anybody set. A daemon that
// would let the community write says that the object is not writable; another one, that there is no access.
//
// What is configured are the settings that the agent would list for the device, which is only asked. Throws what PlanChange
// throws, and SnmpError.
ProbeReport ProbeDevice(const Target& target, const ProbeMeans& means);
// The same for a device that was looked at just now.
ProbeReport ProbeDevice(const Target& target, const ProbeMeans& means, const DeviceLook& look);

// Whether the daemon of a device with that file answers now. It is asked once, before a change, so that a daemon that the
// change has ended can be told from one that nobody here could ask: that one, and whatever else goes wrong, is a no.
bool DoesDaemonAnswer(const Target& target, const ProbeMeans& means, const std::string& file);
// Asks the daemon after a change. One that answered before it gets the time to come back.
ProbeReport ProbeAfterChange(const Target& target, const ProbeMeans& means, const DeviceLook& look, bool answeredBefore);

}  // namespace devhost

#endif

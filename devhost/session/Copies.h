#ifndef DEVHOST_SESSION_COPIES_H
#define DEVHOST_SESSION_COPIES_H

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "devhost/operations/History.h"
#include "devhost/session/LiveHost.h"
#include "devhost/session/Request.h"

namespace devhost {

struct SessionMeans;

// The snapshot with that number. Throws RequestError when there is none, and SnapshotError when it is damaged.
const Snapshot& SnapshotOf(const SnapshotList& list, unsigned long number);

// Requests that look at what a device has, or had before: its file, what is found in it, its snapshots. Each returns the
// body of the answer, and throws RequestError, SnapshotError, or HostError for what a driver did.
class Copies {
 public:
  // All outlive it.
  Copies(const SessionMeans& means, LiveHost& host, Masker& secrets);

  nlohmann::ordered_json Advise(const Request& request);
  nlohmann::ordered_json File(const Request& request);
  nlohmann::ordered_json Findings(const Request& request);
  nlohmann::ordered_json History(const Request& request);
  nlohmann::ordered_json Compare(const Request& request);

  // A device of the project for an operation. Throws RequestError when there is no such device.
  Target TargetOf(unsigned long id);
  // What the device answers now. Throws RequestError when it does not answer everything.
  DeviceAnswers Ask(unsigned long id);
  // The same where the file is what matters. Throws RequestError when the device has not given it, too: an empty text in its
  // place would be a lie.
  DeviceAnswers AskForFile(unsigned long id);
  // Stands for file and settings of the device as they are now: equal as long as they are. It says nothing about them.
  std::string BaseOf(unsigned long id);
  // Throws StaleBase when `base` does not stand for what the device has now.
  void RequireBase(unsigned long id, const std::string& base);

 private:
  struct Known {
    unsigned long revision = 0;
    DeviceCopy copy;
  };

  NamedCopy Now(const Target& target);

  const SessionMeans& m_means;
  LiveHost& m_host;
  Masker& m_secrets;
  const std::string m_session;  // of this process alone
  std::map<unsigned long, Known> m_known;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_SNMP_SNMP_CLIENT_H
#define DEVHOST_SNMP_SNMP_CLIENT_H

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "devhost/snmp/Discovery.h"
#include "devhost/snmp/UdpAddress.h"

namespace devhost {

// The library of Net-SNMP is missing in this build, or does not take an address: why, in one line.
class SnmpError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The name of an object, in numbers.
using Oid = std::vector<unsigned long>;

// How long to wait for one answer, and how often to ask.
struct Patience {
  std::chrono::milliseconds wait{1000};
  int tries = 2;
};

// What has come back.
struct SnmpReply {
  UdpEnd end = UdpEnd::Silent;                     // a daemon says nothing to a community that it does not know
  long error = 0;                                  // the status of the answer; 0 when it is good
  std::vector<std::optional<std::string>> values;  // one for each object; numbers in digits; nothing for a missing one
};

// The statuses of an answer that says why nothing was set.
inline constexpr long kNoAccess = 6;
inline constexpr long kNotWritable = 17;

// What is asked with one community: the values of objects; or to set the one object, where there is a text for it.
struct SnmpRequest {
  std::string community;
  std::vector<Oid> objects;
  std::optional<std::string> text = {};
};

// Asks all of that at once, each with a session of its own, and waits until each has an answer or none in time: together
// they cost the patience of one. The replies are in the order of the requests; one to a request without a community is
// Silent, and nothing was asked. Throws SnmpError.
std::vector<SnmpReply> AskAtOnce(const SocketAddress& address, const std::vector<SnmpRequest>& requests,
                                 const Patience& patience);

// Asks with one community, in SNMPv2c. The community is never on a command line, no configuration file and no MIB file is
// read, no file is written, and nothing is printed.
class SnmpClient {
 public:
  // Throws SnmpError.
  SnmpClient(const SocketAddress& address, std::string community, const Patience& patience = {});

  // The values of the objects. Throws SnmpError.
  SnmpReply Get(const std::vector<Oid>& objects) const;
  // Sets one object to a text. Throws SnmpError.
  SnmpReply Set(const Oid& object, const std::string& text) const;
  // Sends a trap with texts and waits a moment for an objection: Silent means that it was sent, and nobody knows whether it
  // was received. Throws SnmpError.
  UdpEnd SendTrap(const Oid& trap, const std::vector<std::pair<Oid, std::string>>& texts,
                  std::chrono::milliseconds objection) const;

 private:
  SocketAddress m_address;
  std::string m_community;
  Patience m_patience;
};

}  // namespace devhost

#endif

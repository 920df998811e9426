#include "devhost/snmp/SnmpClient.h"

// What stands for the client in a build without the library of Net-SNMP.
namespace devhost {

namespace {

constexpr char kMissing[] =
    "this devhost was built without the library of Net-SNMP (AGENT_SNMP_CLIENT=OFF), so it cannot ask a daemon";

}  // namespace

std::vector<SnmpReply> AskAtOnce(const SocketAddress&, const std::vector<SnmpRequest>&, const Patience&) {
  throw SnmpError(kMissing);
}

SnmpClient::SnmpClient(const SocketAddress&, std::string, const Patience&) {
  throw SnmpError(kMissing);
}

SnmpReply SnmpClient::Get(const std::vector<Oid>&) const {
  return {};
}

SnmpReply SnmpClient::Set(const Oid&, const std::string&) const {
  return {};
}

UdpEnd SnmpClient::SendTrap(const Oid&, const std::vector<std::pair<Oid, std::string>>&, std::chrono::milliseconds) const {
  return UdpEnd::Failed;
}

}  // namespace devhost

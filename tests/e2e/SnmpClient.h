#ifndef TESTS_E2E_SNMP_CLIENT_H
#define TESTS_E2E_SNMP_CLIENT_H

#include <map>
#include <string>
#include <vector>

namespace e2e {

// Objects that the tests ask for.
inline constexpr char kSysObjectId[] = ".1.3.6.1.2.1.1.2.0";
inline constexpr char kSysContact[] = ".1.3.6.1.2.1.1.4.0";
inline constexpr char kSysName[] = ".1.3.6.1.2.1.1.5.0";
inline constexpr char kSysLocation[] = ".1.3.6.1.2.1.1.6.0";
inline constexpr char kSysServices[] = ".1.3.6.1.2.1.1.7.0";
inline constexpr char kSystemGroup[] = ".1.3.6.1.2.1.1";
inline constexpr char kBadCommunities[] = ".1.3.6.1.2.1.11.4.0";  // requests refused for their community
inline constexpr char kFailureTraps[] =
    ".1.3.6.1.2.1.11.30.0";  // whether a refusal sends a trap: 1 or 2; writable, at first 2

// The answer for one object.
struct Answer {
  std::string value;  // the bytes of a string, the digits of a number or an object identifier
  std::string error;  // empty when there is a value; "timeout", "noAccess", "notWritable", "noSuchObject", ...
};
// Shows an answer in a failed test.
std::ostream& operator<<(std::ostream& stream, const Answer& answer);

// A client with a community, which runs the real programs snmpget, snmpset and snmpwalk, once for each request.
class SnmpClient {
 public:
  // `address` has the form that the programs need: "udp:127.0.0.1:40161".
  SnmpClient(std::string address, std::string community)
      : m_address(std::move(address)), m_community(std::move(community)) {}

  Answer Get(const std::string& object) const;
  // The same when no answer is expected: waits only a short time.
  Answer GetNothing(const std::string& object) const;
  // `type` is that of snmpset: "i" for a number, "s" for a string.
  Answer Set(const std::string& object, const std::string& type, const std::string& value) const;
  // Returns everything below an object, by object identifier.
  std::map<std::string, std::string> Walk(const std::string& object) const;

 private:
  std::string Run(const std::string& program, const std::string& patience, const std::vector<std::string>& words) const;

  std::string m_address;
  std::string m_community;
};

}  // namespace e2e

#endif

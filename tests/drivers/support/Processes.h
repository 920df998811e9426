#ifndef TESTS_DRIVERS_SUPPORT_PROCESSES_H
#define TESTS_DRIVERS_SUPPORT_PROCESSES_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>

// Asks again and again until `condition` holds or a generous deadline is over. The last answer.
bool Eventually(const std::function<bool()>& condition, std::chrono::seconds longest = std::chrono::seconds(30));

// Whether the process is there and has not ended. One that has ended and is not reaped yet is not alive.
bool IsAlive(pid_t process);

// The children of this process, ended ones that are not reaped included.
std::size_t CountChildren();

// What a device answers over SNMP (snmpget) for the OID, without quotes; empty when it does not answer
// for half a minute.
std::string SnmpGet(const std::string& address, const std::string& community, const std::string& oid);
// Whether it answers at all. Asks for a few seconds only: for who must not answer.
bool AnswersSnmp(const std::string& address, const std::string& community);
// Sets a text (snmpset). Whether it was set.
bool SnmpSet(const std::string& address, const std::string& community, const std::string& oid, const std::string& value);

inline constexpr char kSysContact[] = ".1.3.6.1.2.1.1.4.0";
inline constexpr char kSysName[] = ".1.3.6.1.2.1.1.5.0";
inline constexpr char kEngineId[] = ".1.3.6.1.6.3.10.2.1.1.0";

#endif

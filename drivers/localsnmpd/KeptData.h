#ifndef DRIVERS_LOCALSNMPD_KEPT_DATA_H
#define DRIVERS_LOCALSNMPD_KEPT_DATA_H

#include <string>

namespace drivers {

// What the daemon may read at its next start of the data that it stored at its last end: its engine's id and boots, the keys
// of its users, and the contact, location, name and switch for traps that were set over SNMP. Each line is checked character
// by character. Empty when `stored` does not hold the engine's lines, as when the daemon was killed while it wrote them.
//
// The daemon stores text that was set over SNMP as it is, line feeds included. So a line may be anybody's who has the write
// community, unless it stands where such a text cannot reach: the users stand in front of all texts, the engine behind them.
std::string SelectKeptData(const std::string& stored);

}  // namespace drivers

#endif

#ifndef DEVHOST_SCRIPT_SCRIPT_PROGRAMS_H
#define DEVHOST_SCRIPT_SCRIPT_PROGRAMS_H

#include <functional>
#include <string>
#include <vector>

#include "devhost/script/Script.h"
#include "devhost/script/ScriptReader.h"

namespace devhost {

// `run PROGRAM [WORD]...`. The program is there and every driver that the words name is one of the project's. Throws
// ActionError.
Action ParseRun(const std::vector<std::string>& words, const std::string& folder, const DriverNames& names);

// `word` with each {address:DRIVER} replaced by what `address` gives for the driver's name or id.
std::string WithAddresses(const std::string& word, const std::function<std::string(const std::string& driver)>& address);

}  // namespace devhost

#endif

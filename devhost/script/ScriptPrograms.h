#ifndef DEVHOST_SCRIPT_SCRIPT_PROGRAMS_H
#define DEVHOST_SCRIPT_SCRIPT_PROGRAMS_H

#include <functional>
#include <string>

#include "devhost/system/RunProgram.h"

namespace devhost {

// Throws std::runtime_error when the program cannot be run from that folder.
void CheckProgram(const std::string& program, const std::string& folder);

// Throws std::runtime_error when a run was a failure.
void CheckRun(const ProgramRun& run, const ProgramResult& result);

// `word` with each {address:DRIVER} replaced by what `address` gives for the driver's name or id.
std::string WithAddresses(const std::string& word, const std::function<std::string(const std::string& driver)>& address);

}  // namespace devhost

#endif

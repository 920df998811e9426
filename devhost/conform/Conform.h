#ifndef DEVHOST_CONFORM_CONFORM_H
#define DEVHOST_CONFORM_CONFORM_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "devhost/conform/Check.h"
#include "devhost/conform/Outcome.h"
#include "devhost/conform/Profile.h"

namespace devhost {

// What is judged, and how.
struct Conformance {
  std::string module;   // absolute path
  std::string agent;    // the module of the real agent, absolute path
  std::string program;  // of devhost, which runs each check: see `command`
  Profile profile;
  std::string profileFile;                                           // absolute path, "" for none; for the program
  unsigned long seed = 0;                                            // of random texts
  std::vector<std::string> runner;                                   // the command that starts the program; none for itself
  std::chrono::milliseconds deadline = std::chrono::seconds(30);     // for one call of the driver
  std::chrono::milliseconds longest = std::chrono::minutes(5);       // for one check
  std::chrono::milliseconds sessionTime = std::chrono::seconds(20);  // for random sessions, beside that
};

// Makes the checks, each in a process of its own, which is ended with all that it has started when one call takes too long,
// or all together do, and with limits: no core, 256 descriptors, files of at most 256 MiB. A crash is an outcome, and the
// next check goes on. What other checks build on comes first: when the module cannot be loaded, or its driver cannot be
// initialised without a crash or a hang, the others are not made. `tell` hears of each outcome as soon as there is one; they
// are returned in the order of the table.
//
// The process is `[runner] program conform --run-check ID --module-dir DIR --seed N --duration S [--profile FILE] MODULE` in
// a private folder, where it calls RunCheckHere and leaves its result. Throws std::system_error when there cannot be such a
// folder.
std::vector<Outcome> RunChecks(const Conformance& conformance, const std::vector<const Check*>& checks,
                               const std::function<void(const Outcome&)>& tell);

// Makes one check in this process, in a private folder: for a debugger. A crash ends the process.
Outcome RunCheckInProcess(const Conformance& conformance, const Check& check);

// Makes one check in this process and this folder, for RunChecks, and leaves its result there.
void RunCheckHere(const Conformance& conformance, const Check& check);

}  // namespace devhost

#endif

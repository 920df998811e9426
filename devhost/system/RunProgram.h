#ifndef DEVHOST_SYSTEM_RUN_PROGRAM_H
#define DEVHOST_SYSTEM_RUN_PROGRAM_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace devhost {

// What to run, and how.
struct ProgramRun {
  std::vector<std::string> words;                                     // the program, then its arguments
  std::string folder;                                                 // where it runs; "" for the current directory
  std::vector<std::pair<std::string, std::string>> environment = {};  // set beside what it inherits
  std::chrono::milliseconds deadline = std::chrono::seconds(60);      // it is killed then, with all that it started
  std::size_t longestOutput = std::size_t{16} * 1024 * 1024;          // it is killed when it writes more
  std::function<bool()> isLate = {};  // asked some times a second: it is killed as at the deadline when this says so
};

// How it ended.
struct ProgramResult {
  int exitStatus = 0;    // of a program that ended by itself
  int signal = 0;        // that ended it, or 0
  bool late = false;     // killed at the deadline, or by isLate
  bool tooLong = false;  // killed because it wrote too much
  // Standard output and standard error, in the order in which they were written; of too much, the first whole lines.
  std::string output;
};

// A program that could not be started: what and why, in one line.
class ProgramError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Where a program without a slash in its name stands: in PATH, then in the folders for daemons, /usr/local/sbin, /usr/sbin
// and /sbin, which PATH often lacks. "" when it is nowhere.
std::string FindProgram(const std::string& name);

// Runs a program to its end, as a KeptProcess: it reads nothing, it inherits no descriptor but the standard ones, and
// nothing that it started is left when this returns or when this process is killed. Throws ProgramError.
ProgramResult RunProgram(const ProgramRun& run);

}  // namespace devhost

#endif

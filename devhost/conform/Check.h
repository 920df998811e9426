#ifndef DEVHOST_CONFORM_CHECK_H
#define DEVHOST_CONFORM_CHECK_H

#include <stdexcept>
#include <string>
#include <vector>

namespace devhost {

struct Trial;

// What a check that finds something says about the driver.
enum class Severity {
  Contract,  // a header of host/ says so: the driver does not conform
  Practice   // good drivers do so: a warning
};

// How much is judged. A level holds the checks of those before it.
enum class Level { Basic, Full };

// One thing that a device driver must do, and the function that finds out whether it does.
struct Check {
  const char* id;  // what stands in front of the first dash is the group
  Severity severity;
  Level level;
  const char* claim;        // the claim of the profile without which nothing is judged; "" for none
  const char* sentence;     // what a good driver does
  const char* explanation;  // why, and how a driver that does not is put right
  // Returns when the driver does it. Throws Violation, or Blocked when that cannot be found out.
  void (*judge)(Trial& trial);
};

// What a driver did wrong, in one line.
class Violation : public std::runtime_error {
 public:
  explicit Violation(const std::string& problem, const std::string& culprit = "")
      : std::runtime_error(problem), slot(culprit) {}

  std::string slot;  // the operation that is to blame; "": the one that was called last
};

// The check cannot be made because the driver already fails at what another check judges.
class Blocked : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws Violation unless that holds.
void Expect(bool holds, const std::string& problem, const std::string& slot = "");

std::string GroupOf(const Check& check);

// All checks, in the order in which they are made: what later ones build on stands first.
const std::vector<Check>& Checks();

// The check with that id, or null.
const Check* FindCheck(const std::string& id);

// The checks of one group each, in the file of that name.
std::vector<Check> ModuleChecks();
std::vector<Check> LifeChecks();
std::vector<Check> SettingsChecks();
std::vector<Check> ErasedChecks();
std::vector<Check> TrapsChecks();
std::vector<Check> FileChecks();
std::vector<Check> CallsChecks();
std::vector<Check> ProcessChecks();
std::vector<Check> StateChecks();
std::vector<Check> ThrowChecks();
std::vector<Check> WholeChecks();
std::vector<Check> FuzzChecks();

}  // namespace devhost

#endif

#ifndef DEVHOST_COMMANDS_CONFORM_REPORT_H
#define DEVHOST_COMMANDS_CONFORM_REPORT_H

#include <string>
#include <vector>

#include "devhost/conform/Outcome.h"

namespace devhost {

// What reports say about a run of checks beside their outcomes.
struct ConformRun {
  std::string module;   // as the command line names it
  std::string options;  // of the command line that a check depends on, each with a blank behind: "--profile kettle.xml "
  std::string seed;
  std::string level;
  Verdict verdict = Verdict::Incomplete;
  std::string sha256 = {};   // of the module's file, "" where it is not known
  std::string version = {};  // of the module, and the number of its contract, as its note says; "" without one
  std::string contract = {};
};

// Fills in what is known of the module's file. Throws FileError when it cannot be read.
void DescribeModule(const std::string& path, ConformRun& run);

// One outcome for a person: status and check, then what went wrong, in which operation, how to find out more and how to make
// this check again. Each line ends in a line feed. "" for one that is unjudged: see VerdictText.
std::string OutcomeText(const Outcome& outcome, const ConformRun& run);

// What is unjudged, a line for each reason, with the check or how many there are. Then the last line: the verdict, then how
// many checks had which status, and the seed.
std::string VerdictText(const std::vector<Outcome>& outcomes, const ConformRun& run);

// All of it as one JSON object on one line: format, module, sha256, version, contract, seed, level, verdict, tally, checks.
std::string ConformJson(const std::vector<Outcome>& outcomes, const ConformRun& run);

// All of it as JUnit's XML: a test suite for each group of checks, a test case for each check.
std::string ConformJUnit(const std::vector<Outcome>& outcomes, const ConformRun& run);

}  // namespace devhost

#endif

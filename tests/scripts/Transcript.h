#ifndef TESTS_SCRIPTS_TRANSCRIPT_H
#define TESTS_SCRIPTS_TRANSCRIPT_H

#include <string>
#include <utility>
#include <vector>

namespace testsupport {

// A transcript is what somebody would have seen on a terminal:
//
//   any lines before the first command are left alone
//   $ devhost run --project project.xml a.devhost
//   what the command wrote, standard output and error as they came
//   [exit status 1]
//
// A command stands on one line after "$ ", is run by sh in the transcript's folder, and is followed by its exit status when
// that is not 0. In the output, the folder is written {project}, the folder of the driver modules {modules}, that of the
// tests' own modules (the environment variable TEST_MODULES) {test-modules}, and the time at which a managed section was
// generated {time}.

struct ShellResult {
  std::string output;  // standard output and error together
  int status = 0;      // 128 + signal when a signal ended it
};

// Runs a command with sh: in that folder, devhost on the path, nothing on standard input. What runs longer than a minute is
// ended with all its children and counts as an error.
ShellResult RunShell(const std::string& command, const std::string& folder);

// Runs the commands of a transcript in `folder` and returns the transcript with what they wrote this time.
std::string PlayTranscript(const std::string& transcript, const std::string& folder);

// The differences of two texts as "diff -u" shows them; "" when there are none.
std::string UnifiedDifference(const std::string& expected, const std::string& found);

// Whether goldens shall be written anew instead of compared: the environment variable UPDATE_GOLDENS is 1.
bool UpdateGoldens();

}  // namespace testsupport

#endif

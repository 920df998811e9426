#ifndef TESTS_SCRIPTS_TRANSCRIPT_H
#define TESTS_SCRIPTS_TRANSCRIPT_H

#include <string>
#include <utility>
#include <vector>

namespace testsupport {

// A transcript is what somebody would see on a terminal:
//
//   any lines before the first command are left alone
//   $ devhost run --project project.xml a.devhost
//   what the command wrote, standard output and error as they came
//   [exit status 1]
//
// A command stands on one line after "$ ". sh runs it in the transcript's folder. Its output follows, then its exit status
// when that is not 0. In the output, {project} stands for the folder, {modules} for the folder of the driver modules,
// {test-modules} for that of the tests' own modules (the environment variable TEST_MODULES), and {time} for the time at
// which a managed section was generated.

struct ShellResult {
  std::string output;  // standard output and error together
  int status = 0;      // 128 + signal when a signal ended it
};

// Runs a command with sh in a folder, with devhost on the path and nothing on standard input. A command that runs longer
// than a minute is ended with all its children and counts as an error.
ShellResult RunShell(const std::string& command, const std::string& folder);

// Runs the commands of a transcript in `folder` and returns the transcript with the output of this run.
std::string PlayTranscript(const std::string& transcript, const std::string& folder);

// Returns the differences of two texts as "diff -u" shows them, or "".
std::string UnifiedDifference(const std::string& expected, const std::string& found);

// Returns whether goldens are written again instead of compared: the environment variable UPDATE_GOLDENS is 1.
bool UpdateGoldens();

}  // namespace testsupport

#endif

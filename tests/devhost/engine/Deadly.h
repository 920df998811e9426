#ifndef TESTS_DEVHOST_ENGINE_DEADLY_H
#define TESTS_DEVHOST_ENGINE_DEADLY_H

#include <chrono>
#include <string>

#include "devhost/system/RunProgram.h"
#include "tests/devhost/support/TestModules.h"
#include "tests/support/ScratchFolder.h"

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define TESTS_UNDER_ADDRESS_SANITIZER
#endif
#endif

// How the built program ends when it sends a driver a command that ends the process. A command "Later:X" has time to end it.
// `setup` is what a shell does before it becomes the program.
// `after` follows the command in the script.
inline devhost::ProgramResult EndBy(const std::string& command, const std::string& setup = ":",
                                    const std::string& after = "") {
  const testsupport::ScratchFolder folder;
  const std::string project = folder.Write(
      "project.xml", "<project><driver id=\"5\" name=\"deadly5\" module=\"" + TestModule("deadly") + "\"/></project>");
  const std::string script =
      folder.Write("script.devhost", "command " + command + "\n" + after +
                                         (command.compare(0, 5, "Later") == 0 ? "run sleep 30\n" : "print still here\n"));
  devhost::ProgramRun run;
  run.deadline = std::chrono::minutes(5);  // on a busy machine, too
  run.words = {"/bin/sh", "-c",  "ulimit -c 0; " + setup + "; exec \"$@\"", "sh", DEVHOST_PROGRAM, "run", "--project",
               project,   script};
  return devhost::RunProgram(run);
}

#endif

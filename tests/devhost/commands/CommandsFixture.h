#ifndef TESTS_DEVHOST_COMMANDS_COMMANDS_FIXTURE_H
#define TESTS_DEVHOST_COMMANDS_COMMANDS_FIXTURE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "devhost/commands/Commands.h"
#include "devhost/system/FileDescriptor.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

// Runs command lines of the program in this process.
class CommandsFixture : public testing::Test {
 protected:
  // What a command line led to.
  struct Outcome {
    ExitStatus status;
    std::string out;
    std::string errors;
  };

  Outcome Run(const std::vector<std::string>& arguments) const {
    std::vector<const char*> argv = {"devhost"};
    for (const std::string& argument : arguments) {
      argv.push_back(argument.c_str());
    }
    const FileDescriptor out(Open("out"));
    const FileDescriptor errors(Open("errors"));
    Console console(out.Get(), errors.Get());
    const ExitStatus status = RunCommandLine(static_cast<int>(argv.size()), argv.data(), console);
    return {status, printed.Read("out"), printed.Read("errors")};
  }

  // The same with that text as standard input.
  Outcome RunOn(const std::string& input, const std::vector<std::string>& arguments) const {
    const FileDescriptor before(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3));
    const FileDescriptor file(::open(printed.Write("input", input).c_str(), O_RDONLY | O_CLOEXEC));
    ::dup2(file.Get(), STDIN_FILENO);
    Outcome outcome = Run(arguments);
    ::dup2(before.Get(), STDIN_FILENO);
    return outcome;
  }

  // Writes a file that only its owner may read.
  std::string File(const std::string& name, const std::string& text) const {
    const std::string path = folder.Write(name, text);
    ::chmod(path.c_str(), 0600);
    return path;
  }

  const testsupport::ScratchFolder folder;

 private:
  int Open(const char* name) const {
    return ::open(printed.Path(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  }

  const testsupport::ScratchFolder printed;
};

}  // namespace devhost

#endif

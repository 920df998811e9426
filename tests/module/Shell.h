#ifndef TESTS_MODULE_SHELL_H
#define TESTS_MODULE_SHELL_H

#include <stdio.h>
#include <sys/wait.h>

#include <stdexcept>
#include <string>

// The output of a shell command, with both streams in one, and its exit status.
struct ShellResult {
  int status = -1;
  std::string output;
};

inline ShellResult RunInShell(const std::string& command) {
  FILE* const pipe = ::popen(("{ " + command + "; } 2>&1").c_str(), "r");
  if (pipe == nullptr) {
    throw std::runtime_error("no shell could be started for: " + command);
  }
  ShellResult result;
  char buffer[4096];
  std::size_t size;
  while ((size = ::fread(buffer, 1, sizeof buffer, pipe)) != 0) {
    result.output.append(buffer, size);
  }
  const int status = ::pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

#endif

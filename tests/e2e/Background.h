#ifndef TESTS_E2E_BACKGROUND_H
#define TESTS_E2E_BACKGROUND_H

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace e2e {

// A program that runs beside a test. It dies with the test, and with this object.
class Background {
 public:
  // `words` are the program's path and its arguments; `environment` is added to the inherited environment. The program's
  // output goes to the file `output`. Throws std::runtime_error when the program cannot be started.
  Background(std::vector<std::string> words, std::vector<std::pair<std::string, std::string>> environment,
             const std::string& output);
  ~Background();
  Background(const Background&) = delete;
  Background& operator=(const Background&) = delete;

  pid_t Pid() const { return m_pid; }
  // Kills and reaps the program. Returns whether it was still running.
  bool Kill();
  // Sends a signal that ends the program, and reaps it. Returns how it ended, as waitpid does. A program that does not end
  // within two minutes is killed.
  int End(int signal);
  // Returns whether the program has ended by itself, and then reaps it.
  bool Ended();

 private:
  pid_t m_pid;
};

}  // namespace e2e

#endif

#ifndef TESTS_KIT_TERMINAL_H
#define TESTS_KIT_TERMINAL_H

#include <sys/types.h>

#include <string>
#include <vector>

// A program that believes that somebody types. It ends with the object.
class Terminal {
 public:
  // Starts `arguments` in `folder`, with these variables ("NAME=value") and no others.
  Terminal(const std::vector<std::string>& arguments, const std::vector<std::string>& variables, const std::string& folder);
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void Type(const std::string& keys) const;
  // Returns what was printed since the last call, up to and with the first match of `pattern`, for which it waits. Throws
  // std::runtime_error with all that was printed when there is none within 30 seconds.
  std::string ReadUntil(const std::string& pattern);

 private:
  int m_terminal = -1;
  pid_t m_process = -1;
  std::string m_printed;
};

#endif

#ifndef DEVHOST_ENGINE_END_NOTE_H
#define DEVHOST_ENGINE_END_NOTE_H

#include <exception>
#include <string>

namespace devhost {

// Says on standard error which call into a driver was under way when the process ends, for as long as it lives. A driver
// that ends the process takes the rest of a script with it, so a status of 0 becomes 1, or what was set
// instead. One that throws out of its
// destructor ends it in any case: the language wants that.
class EndNote {
 public:
  // `call`: command "X" of driver 12 "kitchen".
  explicit EndNote(std::string call);
  // In the reverse order of construction.
  ~EndNote();
  EndNote(const EndNote&) = delete;
  EndNote& operator=(const EndNote&) = delete;

  // Replaces the status 1, for a program where that means something else.
  static void SetExitStatus(int status);

 private:
  static void OnExit();
  [[noreturn]] static void OnTerminate();

  const std::string m_call;
  const EndNote* const m_outer;
  const std::terminate_handler m_handler;  // of before
};

}  // namespace devhost

#endif

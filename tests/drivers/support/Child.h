#ifndef TESTS_DRIVERS_SUPPORT_CHILD_H
#define TESTS_DRIVERS_SUPPORT_CHILD_H

#include <functional>
#include <optional>

// A forked copy of the test that does one thing, for what a process does to itself: become another user, limit itself, die.
class Child {
 public:
  explicit Child(const std::function<int()>& work);
  ~Child();  // kills and reaps it if that has not been done
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void Kill() const;
  // Waits for its end: what `work` returned, nothing when it was killed.
  std::optional<int> Result();

 private:
  int m_pid;
  int m_pipe;
};

// What `work` returns in a child that is an ordinary user: the test's own, or in a test run by root, nobody. Nothing when it
// could not become that.
std::optional<int> ResultAsOrdinaryUser(const std::function<int()>& work);

#endif

#ifndef TESTS_SUPPORT_JOURNAL_H
#define TESTS_SUPPORT_JOURNAL_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

// The calls to all recording fakes that share this journal, in order.
class Journal {
 public:
  // Records a call, then runs the hook from inside the call. The hook may throw, or call back into the tested code.
  void Note(std::string call) {
    m_calls.push_back(std::move(call));
    if (m_hook) {
      // These are copies, because the hook may take the calls or set another hook.
      const std::string noted = m_calls.back();
      const std::function<void(const std::string&)> hook = m_hook;
      hook(noted);
    }
  }

  void SetHook(std::function<void(const std::string& call)> hook) { m_hook = std::move(hook); }

  const std::vector<std::string>& Calls() const { return m_calls; }

  // Returns the calls so far, and forgets them.
  std::vector<std::string> Take() {
    std::vector<std::string> calls;
    calls.swap(m_calls);
    return calls;
  }

 private:
  std::vector<std::string> m_calls;
  std::function<void(const std::string&)> m_hook;
};

#endif

#ifndef TESTS_DEVHOST_SUPPORT_CHANGED_VARIABLE_H
#define TESTS_DEVHOST_SUPPORT_CHANGED_VARIABLE_H

#include <cstdlib>
#include <string>

namespace devhost {

// A variable of the environment, which is set, that has another value for a while.
class ChangedVariable {
 public:
  ChangedVariable(const char* name, const std::string& value) : m_name(name), m_usual(::getenv(name)) {
    ::setenv(name, value.c_str(), 1);
  }
  ~ChangedVariable() { ::setenv(m_name, m_usual.c_str(), 1); }
  ChangedVariable(const ChangedVariable&) = delete;
  ChangedVariable& operator=(const ChangedVariable&) = delete;

 private:
  const char* const m_name;
  const std::string m_usual;
};

}  // namespace devhost

#endif

#ifndef DRIVERS_SSHSNMPD_SSH_ERROR_H
#define DRIVERS_SSHSNMPD_SSH_ERROR_H

#include <stdexcept>
#include <string>

namespace drivers {

// Why something over SSH could not be done. The text says it in one line, without secrets.
class SshError : public std::runtime_error {
 public:
  enum class Kind {
    Unreachable,  // no connection, or it broke, or nothing came in time
    Unsure,       // the same, after a command was sent: it may have been done or not
    Refused       // the other side is there, and `Status` says what is wrong
  };

  // `status` is one of SshStatus.h for Refused.
  SshError(Kind kind, const std::string& text, int status = 0) : std::runtime_error(text), m_kind(kind), m_status(status) {}

  Kind GetKind() const { return m_kind; }
  int Status() const { return m_status; }

 private:
  Kind m_kind;
  int m_status;
};

}  // namespace drivers

#endif

#ifndef TESTS_DEVHOST_SUPPORT_SNMP_DAEMON_H
#define TESTS_DEVHOST_SUPPORT_SNMP_DAEMON_H

#include <csignal>
#include <memory>
#include <string>

#include "tests/e2e/Background.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

// A real snmpd on a port of 127.0.0.1. It ends with this object.
class SnmpDaemon {
 public:
  // Returns when the daemon answers. It reads that text, and the AgentX socket is one of its own unless `more`, which it
  // reads last, names another. Throws std::runtime_error when it does not start.
  explicit SnmpDaemon(const std::string& config, const std::string& more = "");

  std::string Address() const { return "127.0.0.1:" + m_port; }
  const std::string& Port() const { return m_port; }
  pid_t Pid() const { return m_program->Pid(); }
  // What it keeps for its next start.
  std::string Persistent() const { return m_folder.Path("p"); }
  // Ends it as a system does, so that it writes that.
  void Stop() { m_program->End(SIGTERM); }

 private:
  bool Start();

  const testsupport::ScratchFolder m_folder;
  std::string m_port;
  std::unique_ptr<e2e::Background> m_program;
};

}  // namespace devhost

#endif

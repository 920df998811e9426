#ifndef TESTS_DEVHOST_CHECK_SERVED_FILE_H
#define TESTS_DEVHOST_CHECK_SERVED_FILE_H

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/Background.h"
#include "tests/e2e/SnmpClient.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

// A real SNMP daemon that serves one snmpd.conf on a free port of 127.0.0.1.
class ServedFile {
 public:
  // Returns when the daemon answers. Throws std::runtime_error when it does not, with its log.
  // Unless there is to be none, a community that may read is added, so that silence never means a dead daemon.
  enum class Asker { Added, None };
  explicit ServedFile(const std::string& text, Asker asker = Asker::Added);

  e2e::SnmpClient As(const std::string& community) const { return {m_address, community}; }
  // Whether the daemon lets somebody with this community read its name.
  bool LetsIn(const std::string& community) const;
  // The same for a community that is not expected to get an answer.
  bool ShutsOut(const std::string& community) const;
  // An object as somebody reads it who may.
  std::string Value(const std::string& object) const { return As(kAsker).Get(object).value; }

  // Whether subagents find a socket.
  bool IsMaster() const;
  // Starts a second daemon as a subagent of this one, which has what `extend` makes of this line. Returns what asking for
  // the output of the extension "hello" gives once the subagent has registered it.
  e2e::Answer AskSubagent(const std::string& extension);
  // What the daemon has said so far.
  std::string Log() const { return m_folder.Read("snmpd.log"); }
  bool Says(const std::string& words) const { return Log().find(words) != std::string::npos; }
  // The daemon's file as it is now, and what the daemon has stored, once it has been stopped.
  std::string Text() const { return m_folder.Read("snmpd.conf"); }
  std::string Stored() const { return m_folder.Read("snmpd/snmpd.conf"); }
  // Ends it in an orderly way, with its last traps sent.
  void Stop();

  static constexpr char kAsker[] = "asker";

 private:
  std::unique_ptr<e2e::Background> Start(const std::string& name, const std::vector<std::string>& options) const;

  const testsupport::ScratchFolder m_folder;
  std::string m_address;
  std::unique_ptr<e2e::Background> m_daemon;
  std::unique_ptr<e2e::Background> m_subagent;
};

}  // namespace devhost

#endif

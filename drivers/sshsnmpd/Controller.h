#ifndef DRIVERS_SSHSNMPD_CONTROLLER_H
#define DRIVERS_SSHSNMPD_CONTROLLER_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "drivers/sshsnmpd/SshConfiguration.h"
#include "drivers/sshsnmpd/SshConnection.h"

namespace drivers {

// A controller behind SSH: its file and its commands. One connection is kept, and replaced when it turns out to be dead.
//
// Operations return a status of drivers/sshsnmpd/SshStatus.h. kControllerOffLine means that the controller cannot be reached
// and that nothing is known to have been done; repeating the operation later is safe.
class Controller {
 public:
  using LogLine = std::function<void(const std::string& line)>;

  // `log` gets why the controller cannot be reached, once until it can be again.
  Controller(SshConfiguration configuration, LogLine log);

  const std::string& GetPath() const { return m_configuration.file; }
  // "HOST:PORT".
  std::string GetAddress() const;

  // Replaces `text` with the content of the file. A missing file reads as the empty text. Links are followed.
  int Read(std::string& text);
  // Installs `text` where the file still holds `expected` (a missing file holds the empty text) or holds `text` already;
  // else kFileWasChanged. RemoteScripts.h says how. A link is refused.
  int Replace(const std::string& expected, const std::string& text);

  // Runs one of the configuration's commands. When the connection breaks meanwhile, kOutcomeUnknown.
  int RunCommand(const Words& words);

  // What the server shows of itself to everybody.
  struct HostKey {
    std::string type;
    std::string fingerprint;
    SshConnection::HostKey state = SshConnection::HostKey::Unknown;
  };
  // Asks for the host key over a connection of its own, and does not log in.
  int AskHostKey(HostKey& hostKey);
  // Adds the host key to the known-hosts file if it has that fingerprint and is unknown; else kHostKeyDiffers. A key that is
  // known is left as it is.
  int TrustHostKey(const std::string& fingerprint);

 private:
  int Run(const std::string& command, std::string_view input, std::size_t mostOutput, bool isRepeatable, SshResult& result);
  SshConnection& Connect();
  int StatusOf(const class SshError& error);
  void NoteReached();
  Words WithSudo(Words words, bool isWanted) const;

  const SshConfiguration m_configuration;
  const LogLine m_log;
  std::optional<SshConnection> m_connection;
  bool m_saidUnreachable = false;
};

}  // namespace drivers

#endif

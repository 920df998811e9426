#ifndef TESTS_DRIVERS_SUPPORT_SSH_SERVER_H
#define TESTS_DRIVERS_SUPPORT_SSH_SERVER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "devhost/system/KeptProcess.h"
#include "tests/drivers/support/TemporaryFolder.h"

// The distribution's SSH server on a free port of 127.0.0.1, with keys made for the run and one account, "controller", of an
// ordinary user: the test's own, or in a test run by root, nobody. It has no SFTP.
class SshServer {
 public:
  struct Options {
    std::string shell = "/bin/sh";  // of the account
    std::string path;               // folders before /usr/bin and so on in the account's PATH, each with a colon behind it
    bool onlyPath = false;          // leave /usr/bin and so on out
    std::string lines;              // more lines of the server's configuration
  };

  SshServer() : SshServer(Options()) {}
  explicit SshServer(const Options& options);
  ~SshServer();
  SshServer(const SshServer&) = delete;
  SshServer& operator=(const SshServer&) = delete;

  std::uint16_t Port() const { return m_port; }
  // Paths of the private key that the account accepts, of one that it does not, and of one that needs a passphrase.
  std::string Key() const { return m_files.Path("client"); }
  std::string OtherKey() const { return m_files.Path("other"); }
  std::string LockedKey() const { return m_files.Path("locked"); }
  // The fingerprint of the host key, as ssh-keygen prints it.
  std::string Fingerprint() const;
  // Writes a known-hosts file that knows this server under `port`, or one that knows another key there.
  std::string KnownHosts(std::uint16_t port, bool isRight = true) const;

  // How often somebody has logged in, by the server's own log.
  std::size_t Logins() const;

  // A folder of the account's, for its file; removed with the server.
  const TemporaryFolder& Files() const { return m_account; }
  // Makes the account the owner of everything there.
  void GiveFiles() const;
  // The account's user id.
  static unsigned int AccountId();

  // Stops and continues the server, with all of its sessions.
  void Signal(int signal);
  // Ends the server with all of its sessions, and starts it again.
  void Stop();
  void Start();

 private:
  void WriteKeys() const;
  void WriteConfiguration(const Options& options) const;
  // Leaves no process when the server does not start.
  void TryToStart();
  void ExpectStarted() const;

  TemporaryFolder m_files;
  TemporaryFolder m_account;
  std::uint16_t m_port = 0;
  std::unique_ptr<devhost::KeptProcess> m_process;
};

#endif

#ifndef DRIVERS_SSHSNMPD_SSH_CONNECTION_H
#define DRIVERS_SSHSNMPD_SSH_CONNECTION_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "devhost/system/FileDescriptor.h"
#include "drivers/sshsnmpd/Deadline.h"
#include "drivers/sshsnmpd/TcpSocket.h"

struct ssh_counter_struct;
struct ssh_session_struct;
struct ssh_channel_struct;

namespace drivers {

// Where an SSH server is, and which file says what its host key is.
struct SshServer {
  std::string host;
  std::uint16_t port = 22;
  std::string knownHosts;  // absolute path; no other file counts
};

// Who logs in.
struct SshLogin {
  std::string user;
  std::string key;  // path of a private key without a passphrase; "" for the keys of the SSH agent
};

// How a command ended.
struct SshResult {
  int exitStatus = -1;  // -1 when a signal ended it
  std::string output;
  std::string errors;  // its first kilobytes
};

// One connection to an SSH server. No configuration file of SSH is read. No operation waits longer than its deadline, and
// none raises SIGPIPE. All operations but the destructor throw SshError; after that the connection is of no use any more.
class SshConnection {
 public:
  enum class HostKey { Known, Unknown, Differs };

  // Connects and exchanges keys. Nothing that the other side says counts before its host key has been checked.
  SshConnection(const SshServer& server, const Deadline& deadline);
  ~SshConnection();
  SshConnection(const SshConnection&) = delete;
  SshConnection& operator=(const SshConnection&) = delete;

  // Compares the host key with the known-hosts file, which may be missing. A key that the file revokes differs.
  HostKey CheckHostKey() const;
  // The host key's kind ("ssh-ed25519") and its fingerprint ("SHA256:...").
  std::string HostKeyType() const;
  std::string Fingerprint() const;
  // Adds the host key to the known-hosts file, which is made where it is missing.
  void RememberHostKey();

  // Refuses a host key that is not known.
  void LogIn(const SshLogin& login, const Deadline& deadline);

  // Whether the other side has not hung up, as far as this side has been told. Does not wait.
  bool IsAlive();

  // Runs `command` in the user's shell with `input` as its standard input, and waits for its end. More than `mostOutput`
  // bytes of output are an error, Refused with the status of EFBIG. Until the server has opened a channel, `opening` counts,
  // then `deadline`.
  //
  // For a command that may be started again where nobody knows whether it was, a channel is used that was asked for during
  // the command before, so it begins one way to the server and back earlier; `opening` then counts until the server has
  // started it.
  enum class Repeatable { No, Yes };
  SshResult Run(const std::string& command, std::string_view input, std::size_t mostOutput, Repeatable repeatable,
                const Deadline& opening, const Deadline& deadline);

 private:
  struct SessionCloser {
    void operator()(ssh_session_struct* session) const noexcept;
  };
  struct ChannelCloser {
    void operator()(ssh_channel_struct* channel) const noexcept;
  };
  using Channel = std::unique_ptr<ssh_channel_struct, ChannelCloser>;

  template <class Step>
  int Repeat(const Deadline& deadline, Step step);
  void Wait(const Deadline& deadline, std::uint64_t before);
  void SetOption(int option, const void* value);
  Channel OpenChannel(bool mayBeSpare, const Deadline& opening);
  void OpenSpare();
  bool Start(ssh_channel_struct& channel, const std::string& command);
  bool Write(ssh_channel_struct& channel, std::string_view& input, bool& isInputEnded);
  bool Read(ssh_channel_struct& channel, bool isErrors, std::string& text, std::size_t most);
  std::string LastError() const;

  devhost::FileDescriptor m_socket;
  LentSocket m_lent;
  std::string m_knownHosts;
  std::unique_ptr<ssh_counter_struct> m_counter;  // outlives the session, which counts in it
  std::unique_ptr<ssh_session_struct, SessionCloser> m_session;
  Channel m_spare;  // asked for while a command runs; null before the first one
};

}  // namespace drivers

#endif

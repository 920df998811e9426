#include "drivers/sshsnmpd/SshConnection.h"

#include <libssh/libssh.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <new>
#include <optional>
#include <sstream>

#include "drivers/common/FileStatus.h"
#include "drivers/sshsnmpd/KeyAgentSocket.h"
#include "drivers/sshsnmpd/PipeSignalBlock.h"
#include "drivers/sshsnmpd/SshError.h"
#include "drivers/sshsnmpd/SshStatus.h"

namespace drivers {

namespace {

using Kind = SshError::Kind;
using Key = std::unique_ptr<ssh_key_struct, void (*)(ssh_key)>;

const std::size_t kPart = std::size_t{32} * 1024;
const std::size_t kMostErrors = std::size_t{4} * 1024;

Key HostKeyOf(ssh_session session) {
  ssh_key key = nullptr;
  if (::ssh_get_server_publickey(session, &key) != SSH_OK) {
    throw SshError(Kind::Unreachable, "it has shown no host key");
  }
  return Key(key, &::ssh_key_free);
}

// "%" starts an escape in paths that the library is given.
std::string EscapePath(const std::string& path) {
  std::string escaped;
  for (const char character : path) {
    escaped += character == '%' ? std::string("%%") : std::string(1, character);
  }
  return escaped;
}

// Whether the file has a line that revokes the key, for whichever hosts: a key that somebody has stolen proves nothing
// anywhere. The library passes over such lines.
bool IsRevoked(const std::string& knownHosts, const Key& key) {
  char* exported = nullptr;
  if (::ssh_pki_export_pubkey_base64(key.get(), &exported) != SSH_OK) {
    throw SshError(Kind::Unreachable, "its host key cannot be compared");
  }
  const std::string wanted = exported;  // also says which kind of key it is
  ::ssh_string_free_char(exported);
  std::ifstream file(knownHosts);
  const bool isMissing = !file && (errno == ENOENT || errno == ENOTDIR);
  bool isRevoked = false;
  for (std::string line; !isRevoked && std::getline(file, line);) {
    std::istringstream words(line);
    std::string word;
    if (words >> word && word == "@revoked") {
      while (!isRevoked && words >> word) {
        isRevoked = word == wanted;
      }
    }
  }
  if (!isMissing && !isRevoked && !file.eof()) {
    throw SshError(Kind::Refused, DescribeSshStatus(kKnownHostsUnusable), kKnownHostsUnusable);
  }
  return isRevoked;
}

}  // namespace

void SshConnection::SessionCloser::operator()(ssh_session_struct* session) const noexcept {
  const PipeSignalBlock block;
  ::ssh_disconnect(session);
  ::ssh_free(session);
}

void SshConnection::ChannelCloser::operator()(ssh_channel_struct* channel) const noexcept {
  ::ssh_channel_free(channel);
}

SshConnection::SshConnection(const SshServer& server, const Deadline& deadline)
    : m_socket(ConnectTcp(server.host, server.port, deadline)),
      m_lent(m_socket.Get()),
      m_knownHosts(server.knownHosts),
      m_counter(std::make_unique<ssh_counter_struct>()),
      m_session(::ssh_new()) {
  if (!m_session) {
    throw std::bad_alloc();
  }
  const PipeSignalBlock block;
  const int no = 0;
  const unsigned int port = server.port;
  const socket_t socket = m_lent.Get();
  SetOption(SSH_OPTIONS_PROCESS_CONFIG, &no);
  SetOption(SSH_OPTIONS_HOST, server.host.c_str());
  SetOption(SSH_OPTIONS_PORT, &port);
  SetOption(SSH_OPTIONS_KNOWNHOSTS, EscapePath(server.knownHosts).c_str());
  SetOption(SSH_OPTIONS_GLOBAL_KNOWNHOSTS, "/dev/null");
  SetOption(SSH_OPTIONS_FD, &socket);
  ::ssh_set_blocking(m_session.get(), 0);
  ::ssh_set_counters(m_session.get(), m_counter.get(), nullptr);
  if (Repeat(deadline, [this] { return ::ssh_connect(m_session.get()); }) != SSH_OK) {
    throw SshError(Kind::Unreachable, "no SSH connection: " + LastError());
  }
}

SshConnection::~SshConnection() {
  const PipeSignalBlock block;
  m_spare.reset();
}

void SshConnection::SetOption(int option, const void* value) {
  if (::ssh_options_set(m_session.get(), static_cast<ssh_options_e>(option), value) != SSH_OK) {
    throw SshError(Kind::Unreachable, "the SSH library refuses an option: " + LastError());
  }
}

// Repeats `step` until it is done or has failed.
template <class Step>
int SshConnection::Repeat(const Deadline& deadline, Step step) {
  for (;;) {
    const std::uint64_t before = m_counter->in_bytes;
    const int result = step();
    if (result != SSH_AGAIN) {
      return result;
    }
    Wait(deadline, before);
  }
}

// Waits until the other side says something or takes something. Every call of the library may take in what came, so there is
// nothing to wait for when something came since `before`, the number of bytes at that time.
void SshConnection::Wait(const Deadline& deadline, std::uint64_t before) {
  const int left = deadline.Left();
  if (left == 0) {
    throw SshError(Kind::Unreachable, "it did not answer in time");
  }
  if (m_counter->in_bytes != before) {
    return;
  }
  const bool isWriting = (::ssh_get_poll_flags(m_session.get()) & SSH_WRITE_PENDING) != 0;
  pollfd waiting = {m_socket.Get(), static_cast<short>(isWriting ? POLLIN | POLLOUT : POLLIN), 0};
  ::poll(&waiting, 1, left);
}

std::string SshConnection::LastError() const {
  const std::string error = ::ssh_get_error(m_session.get());
  return error.empty() ? "it was closed" : error;
}

SshConnection::HostKey SshConnection::CheckHostKey() const {
  if (IsRevoked(m_knownHosts, HostKeyOf(m_session.get()))) {
    return HostKey::Differs;
  }
  switch (::ssh_session_is_known_server(m_session.get())) {
    case SSH_KNOWN_HOSTS_OK:
      return HostKey::Known;
    case SSH_KNOWN_HOSTS_UNKNOWN:
    case SSH_KNOWN_HOSTS_NOT_FOUND:
      return HostKey::Unknown;
    case SSH_KNOWN_HOSTS_CHANGED:
    case SSH_KNOWN_HOSTS_OTHER:
      return HostKey::Differs;
    default:
      throw SshError(Kind::Refused, DescribeSshStatus(kKnownHostsUnusable), kKnownHostsUnusable);
  }
}

std::string SshConnection::HostKeyType() const {
  return ::ssh_key_type_to_char(::ssh_key_type(HostKeyOf(m_session.get()).get()));
}

std::string SshConnection::Fingerprint() const {
  const Key key = HostKeyOf(m_session.get());
  unsigned char* hash = nullptr;
  std::size_t size = 0;
  if (::ssh_get_publickey_hash(key.get(), SSH_PUBLICKEY_HASH_SHA256, &hash, &size) != SSH_OK) {
    throw SshError(Kind::Unreachable, "its host key has no fingerprint");
  }
  char* const text = ::ssh_get_fingerprint_hash(SSH_PUBLICKEY_HASH_SHA256, hash, size);
  ::ssh_clean_pubkey_hash(&hash);
  const std::string fingerprint = text != nullptr ? text : "";
  ::ssh_string_free_char(text);
  return fingerprint;
}

void SshConnection::RememberHostKey() {
  if (::ssh_session_update_known_hosts(m_session.get()) != SSH_OK) {
    throw SshError(Kind::Refused, DescribeSshStatus(kKnownHostsUnusable), kKnownHostsUnusable);
  }
}

void SshConnection::LogIn(const SshLogin& login, const Deadline& deadline) {
  const PipeSignalBlock block;
  const HostKey hostKey = CheckHostKey();
  if (hostKey != HostKey::Known) {
    const int status = hostKey == HostKey::Unknown ? kHostKeyUnknown : kHostKeyDiffers;
    throw SshError(Kind::Refused, DescribeSshStatus(status) + " (" + HostKeyType() + " " + Fingerprint() + ")", status);
  }
  Key key(nullptr, &::ssh_key_free);
  std::optional<KeyAgentSocket> agent;
  if (!login.key.empty()) {
    ssh_key read = nullptr;
    // Without this function, the library would ask for a passphrase on the host's terminal.
    const auto noPassphrase = [](const char*, char*, std::size_t, int, int, void*) { return -1; };
    if (::ssh_pki_import_privkey_file(login.key.c_str(), nullptr, noPassphrase, nullptr, &read) != SSH_OK) {
      throw SshError(Kind::Refused, DescribeSshStatus(kKeyFileUnusable), kKeyFileUnusable);
    }
    key.reset(read);
  } else {
    // The library closes what it is given. Without a socket it would look for the agent itself.
    const int socket = agent.emplace(deadline).Duplicate();
    if (socket < 0) {
      throw SshError(Kind::Refused, DescribeSshStatus(kLoginRefused), kLoginRefused);
    }
    ::ssh_set_agent_socket(m_session.get(), socket);
  }
  const int result = Repeat(deadline, [&] {
    const int step = key ? ::ssh_userauth_publickey(m_session.get(), login.user.c_str(), key.get())
                         : ::ssh_userauth_agent(m_session.get(), login.user.c_str());
    return step == SSH_AUTH_AGAIN ? SSH_AGAIN : step;
  });
  if (result != SSH_AUTH_SUCCESS && agent && agent->WasCut()) {
    throw SshError(Kind::Unreachable, "the SSH agent on this machine did not answer in time");
  }
  if (result == SSH_AUTH_DENIED || result == SSH_AUTH_PARTIAL) {
    throw SshError(Kind::Refused, DescribeSshStatus(kLoginRefused), kLoginRefused);
  }
  if (result != SSH_AUTH_SUCCESS) {
    throw SshError(Kind::Unreachable, "the connection broke while logging in: " + LastError());
  }
}

bool SshConnection::IsAlive() {
  const PipeSignalBlock block;
  pollfd waiting = {m_socket.Get(), POLLIN, 0};
  if (::poll(&waiting, 1, 0) > 0) {
    std::array<char, 1> peeked = {};
    const ssize_t count = ::recv(m_socket.Get(), peeked.data(), peeked.size(), MSG_PEEK | MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
      return false;
    }
  }
  return ::ssh_is_connected(m_session.get()) != 0;
}

// A channel for one command: the spare one where that will do. A server may allow one channel at a time: it refuses the
// spare one, or the other one because of it.
SshConnection::Channel SshConnection::OpenChannel(bool mayBeSpare, const Deadline& opening) {
  for (bool isSpare = mayBeSpare && m_spare != nullptr;; isSpare = false) {
    Channel channel = isSpare ? std::move(m_spare) : Channel(::ssh_channel_new(m_session.get()));
    if (!channel) {
      throw std::bad_alloc();
    }
    if (Repeat(opening, [&] { return ::ssh_channel_open_session(channel.get()); }) == SSH_OK) {
      return channel;
    }
    const bool isLast = !isSpare && m_spare == nullptr;
    if (isLast || ::ssh_is_connected(m_session.get()) == 0) {
      throw SshError(Kind::Unreachable, "the connection broke: " + LastError());
    }
    m_spare.reset();
  }
}

// Asks for the channel of the next command, so that it is there when that comes, and does not wait for the answer.
void SshConnection::OpenSpare() {
  if (m_spare) {
    return;
  }
  m_spare.reset(::ssh_channel_new(m_session.get()));
  if (m_spare) {
    ::ssh_channel_open_session(m_spare.get());
  }
}

// Whether the server has started the command, as far as it has answered.
bool SshConnection::Start(ssh_channel_struct& channel, const std::string& command) {
  const int result = ::ssh_channel_request_exec(&channel, command.c_str());
  if (result == SSH_ERROR) {
    throw SshError(Kind::Unsure, "the command was not started: " + LastError());
  }
  return result == SSH_OK;
}

SshResult SshConnection::Run(const std::string& command, std::string_view input, std::size_t mostOutput,
                             Repeatable repeatable, const Deadline& opening, const Deadline& deadline) {
  const PipeSignalBlock block;
  const bool isRepeatable = repeatable == Repeatable::Yes;
  const Channel channel = OpenChannel(isRepeatable, opening);
  // The input need not wait for the answer: a server that does not start the command drops it.
  bool isStarted = Start(*channel, command);
  OpenSpare();
  SshResult result;
  bool isInputEnded = false;
  for (;;) {
    const std::uint64_t before = m_counter->in_bytes;
    isStarted = isStarted || Start(*channel, command);
    bool isBusy = Write(*channel, input, isInputEnded);
    isBusy = Read(*channel, false, result.output, mostOutput) || isBusy;
    isBusy = Read(*channel, true, result.errors, kMostErrors) || isBusy;
    if (result.output.size() > mostOutput) {
      throw SshError(Kind::Refused, DescribeSshStatus(FileStatusOfErrno(EFBIG)), FileStatusOfErrno(EFBIG));
    }
    // This also takes in what came after the end of the output, which reading does not.
    result.exitStatus = ::ssh_channel_get_exit_status(channel.get());
    if (isBusy || m_counter->in_bytes != before) {
      continue;
    }
    const bool isConnected = ::ssh_is_connected(m_session.get()) != 0;
    const bool isClosed = isConnected && ::ssh_channel_is_closed(channel.get()) != 0;
    if (isClosed || (result.exitStatus >= 0 && ::ssh_channel_is_eof(channel.get()) != 0)) {
      return result;
    }
    if (!isConnected) {
      throw SshError(Kind::Unsure, "the connection broke: " + LastError());
    }
    try {
      Wait(isStarted || !isRepeatable ? deadline : opening, before);
    } catch (const SshError& error) {
      throw SshError(Kind::Unsure, error.what());
    }
  }
}

// Whether it has sent something.
bool SshConnection::Write(ssh_channel_struct& channel, std::string_view& input, bool& isInputEnded) {
  // A command that ends early does not read the rest.
  if (isInputEnded || ::ssh_channel_is_closed(&channel) != 0) {
    return false;
  }
  if (input.empty()) {
    isInputEnded = true;
    ::ssh_channel_send_eof(&channel);
    return true;
  }
  const std::string_view part = input.substr(0, kPart);
  const int written = ::ssh_channel_write(&channel, part.data(), static_cast<std::uint32_t>(part.size()));
  input.remove_prefix(written > 0 ? std::min(part.size(), static_cast<std::size_t>(written)) : 0);
  return written > 0;
}

// Whether something came. What is over the limit is taken and dropped, so that the other side is not kept waiting, but for
// one byte that shows it.
bool SshConnection::Read(ssh_channel_struct& channel, bool isErrors, std::string& text, std::size_t most) {
  std::array<char, kPart> part;
  const int count = ::ssh_channel_read_nonblocking(&channel, part.data(), part.size(), isErrors ? 1 : 0);
  if (count <= 0) {
    return false;
  }
  text.append(part.data(), std::min(static_cast<std::size_t>(count), most + 1 - std::min(most + 1, text.size())));
  return true;
}

}  // namespace drivers

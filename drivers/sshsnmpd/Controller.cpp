#include "drivers/sshsnmpd/Controller.h"

#include <random>
#include <utility>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/FileStatus.h"
#include "drivers/common/OffLineStatus.h"
#include "drivers/sshsnmpd/RemoteScripts.h"
#include "drivers/sshsnmpd/SshError.h"
#include "drivers/sshsnmpd/SshStatus.h"

namespace drivers {

namespace {

using Kind = SshError::Kind;
using Sudo = SshConfiguration::Sudo;

// What start files of a shell may print before a program does.
const std::size_t kMostNoise = std::size_t{64} * 1024;

// A name that no other program on the controller has.
std::string NewToken() {
  const char digits[] = "0123456789abcdef";
  std::random_device random;
  std::string token;
  for (int count = 0; count < 16; ++count) {
    token.push_back(digits[random() % 16]);
  }
  return token;
}

}  // namespace

Controller::Controller(SshConfiguration configuration, LogLine log)
    : m_configuration(std::move(configuration)), m_log(std::move(log)) {}

std::string Controller::GetAddress() const {
  return m_configuration.server.host + ":" + std::to_string(m_configuration.server.port);
}

int Controller::Read(std::string& text) {
  const std::string token = NewToken();
  const Words program = ReadProgram(m_configuration.file, ConfigFile::kMaximumSize, token);
  const std::string command = QuoteWords(WithSudo(program, m_configuration.sudo == Sudo::All));
  SshResult result;
  int status = Run(command, std::string_view(), ConfigFile::kMaximumSize + kMostNoise, true, result);
  status = status != 0 ? status : StatusOfProgram(result);
  if (status != 0) {
    return status;
  }
  const std::size_t begin = result.output.find(token + "\n");
  if (begin == std::string::npos) {
    return kControllerUnfit;
  }
  result.output.erase(0, begin + token.size() + 1);
  text = std::move(result.output);
  return 0;
}

int Controller::Replace(const std::string& expected, const std::string& text) {
  const Words program = ReplaceProgram(m_configuration.file, NewToken(), text.size(), expected.size());
  const std::string command = QuoteWords(WithSudo(program, m_configuration.sudo == Sudo::All));
  SshResult result;
  const int status = Run(command, text + expected, kMostNoise, true, result);
  return status != 0 ? status : StatusOfProgram(result);
}

int Controller::RunCommand(const Words& words) {
  if (words.empty()) {
    return kNoCommand;
  }
  // What the command prints may quote secrets, so nobody reads it. A daemon that it leaves running must not hold the
  // channel.
  const std::string command = QuoteWords(WithSudo(words, m_configuration.sudo != Sudo::No)) + " </dev/null >/dev/null 2>&1";
  SshResult result;
  const int status = Run(command, std::string_view(), kMostNoise, false, result);
  return status != 0 ? status : result.exitStatus != 0 ? kCommandFailed : 0;
}

int Controller::AskHostKey(HostKey& hostKey) {
  try {
    const SshConnection connection(m_configuration.server, Deadline(m_configuration.connectTimeout));
    hostKey = HostKey{connection.HostKeyType(), connection.Fingerprint(), connection.CheckHostKey()};
    NoteReached();
    return 0;
  } catch (const SshError& error) {
    return StatusOf(error);
  }
}

int Controller::TrustHostKey(const std::string& fingerprint) {
  try {
    SshConnection connection(m_configuration.server, Deadline(m_configuration.connectTimeout));
    const SshConnection::HostKey state = connection.CheckHostKey();
    if (state == SshConnection::HostKey::Differs || connection.Fingerprint() != fingerprint) {
      return kHostKeyDiffers;
    }
    if (state == SshConnection::HostKey::Unknown) {
      connection.RememberHostKey();
    }
    NoteReached();
    return 0;
  } catch (const SshError& error) {
    return StatusOf(error);
  }
}

SshConnection& Controller::Connect() {
  if (m_connection && !m_connection->IsAlive()) {
    m_connection.reset();
  }
  if (!m_connection) {
    const Deadline deadline(m_configuration.connectTimeout);
    m_connection.emplace(m_configuration.server, deadline);
    try {
      m_connection->LogIn(m_configuration.login, deadline);
    } catch (...) {
      m_connection.reset();
      throw;
    }
    NoteReached();
  }
  return *m_connection;
}

// Runs `command` and returns 0 when it came to its end. When the connection breaks, a second one is tried, unless the
// command may have been started and must not be started twice.
int Controller::Run(const std::string& command, std::string_view input, std::size_t mostOutput, bool isRepeatable,
                    SshResult& result) {
  for (bool isSecond = false;; isSecond = true) {
    try {
      const auto repeatable = isRepeatable ? SshConnection::Repeatable::Yes : SshConnection::Repeatable::No;
      result = Connect().Run(command, input, mostOutput, repeatable, Deadline(m_configuration.connectTimeout),
                             Deadline(m_configuration.operationTimeout));
      return 0;
    } catch (const SshError& error) {
      const bool hadConnection = m_connection.has_value();
      m_connection.reset();
      if (error.GetKind() == Kind::Unsure && !isRepeatable) {
        return kOutcomeUnknown;
      }
      // One that could not be made just now cannot be made again.
      if (error.GetKind() == Kind::Refused || !hadConnection || isSecond) {
        return StatusOf(error);
      }
    }
  }
}

int Controller::StatusOf(const SshError& error) {
  if (error.GetKind() == Kind::Refused) {
    m_log(std::string("the controller ") + GetAddress() + ": " + error.what());
    return error.Status();
  }
  if (!m_saidUnreachable) {
    m_log("the controller " + GetAddress() + " cannot be reached: " + error.what());
    m_saidUnreachable = true;
  }
  return kControllerOffLine;
}

void Controller::NoteReached() {
  if (m_saidUnreachable) {
    m_log("the controller " + GetAddress() + " can be reached again");
    m_saidUnreachable = false;
  }
}

Words Controller::WithSudo(Words words, bool isWanted) const {
  if (isWanted) {
    words.insert(words.begin(), {"sudo", "-n", "--"});
  }
  return words;
}

}  // namespace drivers

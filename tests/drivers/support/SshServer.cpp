#include "tests/drivers/support/SshServer.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "tests/drivers/support/Processes.h"
#include "tests/module/Shell.h"

namespace {

const unsigned int kNobody = 65534;
const char kFolders[] = "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin";

std::string QuotedForShell(const std::string& text) {
  std::string quoted = "'";
  for (const char character : text) {
    quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
  }
  return quoted + "'";
}

// A word of the server's configuration.
std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char character : text) {
    quoted += (character == '"' || character == '\\' ? "\\" : "") + std::string(1, character);
  }
  return quoted + "\"";
}

std::string WithoutEscapes(const std::string& path) {
  std::string escaped;
  for (const char character : path) {
    escaped += character == '%' ? std::string("%%") : std::string(1, character);
  }
  return escaped;
}

sockaddr_in Loopback(std::uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

std::uint16_t FreePort() {
  const devhost::FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  if (::bind(socket.Get(), reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      ::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no free port");
  }
  return ntohs(address.sin_port);
}

std::string MustRun(const std::string& command) {
  const ShellResult result = RunInShell(command);
  if (result.status != 0) {
    throw std::runtime_error(command + ": " + result.output);
  }
  return result.output;
}

void GiveFolder(const std::string& path) {
  if (::geteuid() == 0) {
    MustRun("chown -hR " + std::to_string(kNobody) + ":" + std::to_string(kNobody) + " " + QuotedForShell(path));
  }
}

std::string WordOf(const std::string& line, int number) {
  std::string rest = line;
  for (int skipped = 0; skipped < number; ++skipped) {
    rest.erase(0, rest.find(' ') + 1);
  }
  return rest.substr(0, rest.find_first_of(" \n"));
}

}  // namespace

unsigned int SshServer::AccountId() {
  return ::geteuid() == 0 ? kNobody : ::geteuid();
}

SshServer::SshServer(const Options& options) {
  WriteKeys();
  // Another process may take the free port before the server does.
  for (int attempt = 0; attempt != 5 && !m_process; ++attempt) {
    m_port = FreePort();
    WriteConfiguration(options);
    GiveFolder(m_files.Path());
    GiveFiles();
    TryToStart();
  }
  ExpectStarted();
}

SshServer::~SshServer() = default;

void SshServer::WriteKeys() const {
  for (const char* const name : {"host", "client", "other", "otherhost"}) {
    MustRun("ssh-keygen -q -t ed25519 -N '' -C test -f " + QuotedForShell(m_files.Path(name)));
  }
  MustRun("ssh-keygen -q -t ed25519 -a 1 -N secret -C test -f " + QuotedForShell(m_files.Path("locked")));
  m_files.Write("authorized", m_files.Read("client.pub"));
}

void SshServer::WriteConfiguration(const Options& options) const {
  const std::string id = std::to_string(AccountId());
  const std::string group = std::to_string(::geteuid() == 0 ? kNobody : ::getegid());
  m_files.Write("passwd", "controller:x:" + id + ":" + group + "::/:" + options.shell + "\n");
  m_files.Write("group", "controller:x:" + group + ":\n");
  m_files.Write("config", "Port " + std::to_string(m_port) + "\nListenAddress 127.0.0.1\nHostKey " +
                              Quoted(m_files.Path("host")) + "\nAuthorizedKeysFile " +
                              Quoted(WithoutEscapes(m_files.Path("authorized"))) +
                              "\nPidFile none\nUsePAM no\nStrictModes no\nPasswordAuthentication no\nMaxStartups 1000\n"
                              "KbdInteractiveAuthentication no\nPrintMotd no\nSetEnv " +
                              Quoted("PATH=" + options.path + (options.onlyPath ? "" : kFolders)) + "\n" + options.lines);
}

void SshServer::GiveFiles() const {
  GiveFolder(m_account.Path());
}

void SshServer::Start() {
  TryToStart();
  ExpectStarted();
}

void SshServer::ExpectStarted() const {
  if (!m_process) {
    throw std::runtime_error("the SSH server does not start: " + m_files.Read("log"));
  }
}

void SshServer::TryToStart() {
  devhost::ProcessImage image;
  image.program = "/usr/sbin/sshd";
  image.arguments = {"/usr/sbin/sshd", "-D", "-e", "-f", m_files.Path("config")};
  if (::geteuid() == 0) {
    const std::string id = std::to_string(kNobody);
    image.program = "/usr/bin/setpriv";
    image.arguments.insert(image.arguments.begin(), {"setpriv", "--reuid", id, "--regid", id, "--clear-groups", "--"});
  }
  // The account is known to the server alone, so it can have any shell.
  image.environment = {"PATH=" + std::string(kFolders), "LD_PRELOAD=libnss_wrapper.so",
                       "NSS_WRAPPER_PASSWD=" + m_files.Path("passwd"), "NSS_WRAPPER_GROUP=" + m_files.Path("group")};
  const devhost::FileDescriptor log(::open(m_files.Path("log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
  image.output = log.Get();
  const std::size_t before = m_files.Read("log").size();
  m_process = std::make_unique<devhost::KeptProcess>(image);
  // It says so itself: another process may answer at the port.
  const auto listens = [&] { return m_files.Read("log").find("Server listening on ", before) != std::string::npos; };
  if (!Eventually([&] { return listens() || m_process->WaitForEnd(std::chrono::milliseconds(0)); }) || !listens()) {
    m_process.reset();
  }
}

std::size_t SshServer::Logins() const {
  const std::string log = m_files.Read("log");
  std::size_t count = 0;
  for (std::size_t at = 0; (at = log.find("Accepted publickey for ", at)) != std::string::npos; ++at) {
    ++count;
  }
  return count;
}

void SshServer::Stop() {
  m_process.reset();
}

void SshServer::Signal(int signal) {
  // The sessions are children of the server, and the commands are theirs.
  std::vector<pid_t> processes = {m_process->Pid()};
  for (std::size_t at = 0; at < processes.size(); ++at) {
    const std::string id = std::to_string(processes[at]);
    std::ifstream children("/proc/" + id + "/task/" + id + "/children");
    processes.insert(processes.end(), std::istream_iterator<pid_t>(children), {});
  }
  for (const pid_t process : processes) {
    ::kill(process, signal);
  }
}

std::string SshServer::Fingerprint() const {
  return WordOf(MustRun("ssh-keygen -lf " + QuotedForShell(m_files.Path("host.pub"))), 1);
}

std::string SshServer::KnownHosts(std::uint16_t port, bool isRight) const {
  const std::string name = std::string(isRight ? "known" : "wrong") + std::to_string(port);
  const std::string key = m_files.Read(isRight ? "host.pub" : "otherhost.pub");
  m_files.Write(name, "[127.0.0.1]:" + std::to_string(port) + " " + WordOf(key, 0) + " " + WordOf(key, 1) + "\n");
  return m_files.Path(name);
}

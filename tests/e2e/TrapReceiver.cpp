#include "tests/e2e/TrapReceiver.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <ostream>
#include <sstream>
#include <stdexcept>

#include "devhost/system/RunProgram.h"
#include "tests/e2e/Wait.h"

namespace e2e {
namespace {

constexpr char kMark[] = ".1.3.6.1.4.1.32473.1.";

std::string Program(const std::string& name, const std::string& package) {
  std::string path = devhost::FindProgram(name);
  if (path.empty()) {
    throw std::runtime_error(name + " is missing: install the package " + package);
  }
  return path;
}

// A socket on 127.0.0.1, closed at the end.
class Socket {
 public:
  Socket() : m_handle(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    if (m_handle < 0) {
      throw std::runtime_error("no socket");
    }
  }
  ~Socket() { ::close(m_handle); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  // Binds to a free port and returns it.
  std::string Bind() const {
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    if (::bind(m_handle, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::getsockname(m_handle, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      throw std::runtime_error("no free port");
    }
    return std::to_string(ntohs(address.sin_port));
  }

  // Returns whether a datagram to the port is answered soon. The socket is connected, so that a closed port fails at once.
  bool Asks(const std::string& port, const std::string& datagram) const {
    const sockaddr_in address = Loopback(static_cast<std::uint16_t>(std::stoul(port)));
    ::connect(m_handle, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::send(m_handle, datagram.data(), datagram.size(), 0);
    pollfd answer = {m_handle, POLLIN, 0};
    char byte = 0;
    return ::poll(&answer, 1, 100) == 1 && ::recv(m_handle, &byte, 1, 0) == 1;
  }

 private:
  static sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
  }

  int m_handle;
};

// Sends an SNMPv3 discovery. Every engine answers it with a report, whatever else it refuses.
bool Listens(const std::string& port) {
  static const char kDiscovery[] =
      "\x30\x39\x02\x01\x03\x30\x0f\x02\x02\x01\x02\x02\x03\x00\xff\xe3\x04\x01\x04\x02\x01\x03\x04\x10\x30\x0e\x04\x00\x02"
      "\x01\x00\x02\x01\x00\x04\x00\x04\x00\x04\x00\x30\x11\x04\x00\x04\x00\xa0\x0b\x02\x01\x01\x02\x01\x00\x02\x01\x00\x30"
      "\x00";
  return Socket().Asks(port, std::string(kDiscovery, sizeof kDiscovery - 1));
}

// Reads "TRAP|from|TRAP2, SNMP v2c, community NAME|... = OID: KIND" with tabs between the values. Returns false for other
// lines.
bool ReadTrap(const std::string& line, Trap& trap) {
  const std::string community = "community ";
  const std::string kind = ".1.3.6.1.6.3.1.1.4.1.0 = OID: ";
  const std::size_t communityAt = line.find(community);
  const std::size_t kindAt = line.find(kind);
  if (line.rfind("TRAP|", 0) != 0 || communityAt == std::string::npos || kindAt == std::string::npos) {
    return false;
  }
  const std::size_t begin = communityAt + community.size();
  trap.community = line.substr(begin, line.find('|', begin) - begin);
  trap.kind = line.substr(kindAt + kind.size(), line.find('\t', kindAt) - kindAt - kind.size());
  return true;
}

std::vector<Trap> ReadTraps(const std::string& output) {
  std::vector<Trap> traps;
  std::istringstream lines(output.substr(0, output.rfind('\n') + 1));  // without a line that is still being written
  std::string line;
  Trap trap;
  while (std::getline(lines, line)) {
    if (ReadTrap(line, trap)) {
      traps.push_back(trap);
    }
  }
  return traps;
}

}  // namespace

bool operator==(const Trap& left, const Trap& right) {
  return left.kind == right.kind && left.community == right.community;
}

std::ostream& operator<<(std::ostream& stream, const Trap& trap) {
  return stream << trap.kind << " with community \"" << trap.community << "\"";
}

std::string FreePort() {
  return Socket().Bind();
}

TrapReceiver::TrapReceiver() {
  m_folder.Write("snmptrapd.conf", "disableAuthorization yes\n");
  // Another process may take the free port before the program does.
  for (int attempt = 0; attempt != 5; ++attempt) {
    if (Start()) {
      return;
    }
  }
  throw std::runtime_error("snmptrapd does not start: " + m_folder.Read("output"));
}

bool TrapReceiver::Start() {
  m_port = FreePort();
  m_program = std::make_unique<Background>(
      std::vector<std::string>{Program("snmptrapd", "snmptrapd"), "-f", "-n", "-C", "-c", m_folder.Path("snmptrapd.conf"),
                               "-m", "", "-M", "/nonexistent", "-On", "-Lo", "-F", "TRAP|%b|%P|%v\\n", "-p",
                               m_folder.Path("pid"), "udp:127.0.0.1:" + m_port},
      std::vector<std::pair<std::string, std::string>>{{"SNMP_PERSISTENT_DIR", m_folder.Path("p")},
                                                       {"SNMPCONFPATH", m_folder.Path()}},
      m_folder.Path("output"));
  return Eventually([this] { return m_program->Ended() || Listens(m_port); }) && !m_program->Ended();
}

void TrapReceiver::SendMark(const std::string& kind) const {
  devhost::ProgramRun run;
  run.words = {Program("snmptrap", "snmp"), "-v2c", "-c", "mark", "-m", "", "-M", "", "127.0.0.1:" + m_port, "", kind};
  run.environment = {{"SNMP_PERSISTENT_DIR", m_folder.Path("p")}, {"SNMPCONFPATH", m_folder.Path()}};
  const devhost::ProgramResult result = devhost::RunProgram(run);
  if (result.exitStatus != 0 || result.signal != 0) {
    throw std::runtime_error("snmptrap failed: " + result.output);
  }
}

std::vector<Trap> TrapReceiver::Traps() {
  const std::string mark = kMark + std::to_string(++m_marks);
  SendMark(mark);
  std::vector<Trap> all;
  const bool through = Eventually([this, &all, &mark] {
    all = ReadTraps(m_folder.Read("output"));
    return !all.empty() && all.back().kind == mark;
  });
  if (!through) {
    throw std::runtime_error("a trap of our own does not arrive: " + m_folder.Read("output"));
  }
  std::vector<Trap> others;
  for (const Trap& trap : all) {
    if (trap.kind.rfind(kMark, 0) != 0) {
      others.push_back(trap);
    }
  }
  return others;
}

}  // namespace e2e

#include "tests/devhost/support/SnmpDaemon.h"

#include <stdexcept>
#include <vector>

#include "devhost/snmp/Discovery.h"
#include "devhost/snmp/UdpAddress.h"
#include "devhost/system/RunProgram.h"
#include "tests/e2e/TrapReceiver.h"
#include "tests/e2e/Wait.h"

namespace devhost {

SnmpDaemon::SnmpDaemon(const std::string& config, const std::string& more) {
  m_folder.Write("snmpd.conf", config);
  m_folder.Write("more.conf", "agentXSocket unix:" + m_folder.Path("agentx") + "\n" + more);
  // Another process may take the free port before the program does.
  for (int attempt = 0; attempt != 5; ++attempt) {
    if (Start()) {
      return;
    }
  }
  throw std::runtime_error("snmpd does not start: " + m_folder.Read("output"));
}

bool SnmpDaemon::Start() {
  m_port = e2e::FreePort();
  const std::string program = FindProgram("snmpd").empty() ? "/usr/sbin/snmpd" : FindProgram("snmpd");
  m_program = std::make_unique<e2e::Background>(
      std::vector<std::string>{program, "-f", "-Lo", "-C", "-c",
                               m_folder.Path("snmpd.conf") + "," + m_folder.Path("more.conf"), "-m", "", "-M", "", "-I",
                               "-smux", "-r", "-p", m_folder.Path("pid"), "udp:127.0.0.1:" + m_port},
      std::vector<std::pair<std::string, std::string>>{
          {"SNMP_PERSISTENT_DIR", Persistent()}, {"SNMPCONFPATH", m_folder.Path()}, {"HOME", m_folder.Path()}},
      m_folder.Path("output"));
  const SocketAddress address = Resolve({"127.0.0.1", m_port}).value();
  const Discovery discovery(address.Get(), address.size);
  return e2e::Eventually([this, &discovery] {
           return m_program->Ended() || discovery.Ask(std::chrono::milliseconds(20)) == UdpEnd::Answered;
         }) &&
         !m_program->Ended();
}

}  // namespace devhost

#include "tests/devhost/check/ServedFile.h"

#include <signal.h>

#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "devhost/system/RunProgram.h"
#include "tests/e2e/TrapReceiver.h"
#include "tests/e2e/Wait.h"

namespace devhost {

std::unique_ptr<e2e::Background> ServedFile::Start(const std::string& name, const std::vector<std::string>& options) const {
  std::vector<std::string> words = {FindProgram("snmpd"), "-f", "-Lo", "-C", "-m", "", "-M", "", "-r"};
  if (words.front().empty()) {
    throw std::runtime_error("snmpd is missing: install the package snmpd");
  }
  words.insert(words.end(), options.begin(), options.end());
  const std::string home = m_folder.Path(name);
  std::filesystem::create_directory(home);
  const std::vector<std::pair<std::string, std::string>> environment = {
      {"SNMP_PERSISTENT_DIR", home}, {"SNMPCONFPATH", home}, {"HOME", home}};
  return std::make_unique<e2e::Background>(words, environment, m_folder.Path(name + ".log"));
}

ServedFile::ServedFile(const std::string& text, Asker asker) : m_address("udp:127.0.0.1:" + e2e::FreePort()) {
  const std::string access = asker == Asker::None ? "" : "\nrocommunity  " + std::string(kAsker) + "\n";
  const std::string file = m_folder.Write("snmpd.conf", text + access);
  // A second file wins over the first: the socket of the section is for one daemon of the machine alone.
  const std::string more = m_folder.Write("more.conf", "agentXSocket unix:" + m_folder.Path("agentx") + "\n");
  // The modules that a subagent is asked for here are left to it.
  m_daemon = Start("snmpd", {"-I", "-smux,nsExtend,extend", "-c", file + "," + more, m_address});
  if (!e2e::Eventually([this] { return m_daemon->Ended() || Says("NET-SNMP version"); }) || m_daemon->Ended()) {
    throw std::runtime_error("the daemon does not serve:\n" + Log());
  }
}

e2e::Answer ServedFile::AskSubagent(const std::string& extension) {
  constexpr char kOutputOfHello[] = ".1.3.6.1.4.1.8072.1.3.2.3.1.1.5.104.101.108.108.111";
  const std::string socket = "unix:" + m_folder.Path("agentx");
  const std::string file = m_folder.Write("subagent.conf", extension + "\n");
  m_subagent = Start("subagent", {"-X", "-I", "nsExtend,extend", "-x", socket, "-c", file});
  e2e::Answer answer;
  e2e::Eventually([&] {
    answer = As(kAsker).Get(kOutputOfHello);
    return answer.error.rfind("noSuch", 0) != 0;
  });
  return answer;
}

bool ServedFile::LetsIn(const std::string& community) const {
  return As(community).Get(e2e::kSysName).error.empty();
}

bool ServedFile::ShutsOut(const std::string& community) const {
  return As(community).GetNothing(e2e::kSysName).error == "timeout" && LetsIn(kAsker);
}

bool ServedFile::IsMaster() const {
  return std::filesystem::exists(m_folder.Path("agentx"));
}

void ServedFile::Stop() {
  ::kill(m_daemon->Pid(), SIGTERM);
  if (!e2e::Eventually([this] { return m_daemon->Ended(); })) {
    throw std::runtime_error("the daemon does not stop:\n" + Log());
  }
}

}  // namespace devhost

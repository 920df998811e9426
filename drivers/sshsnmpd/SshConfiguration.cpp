#include "drivers/sshsnmpd/SshConfiguration.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <system_error>

#include "drivers/common/MisspeltAttribute.h"

namespace drivers {

namespace {

const char kLettersAndDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

bool HasOnly(const std::string& text, const std::string& others) {
  return text.find_first_not_of(kLettersAndDigits + others) == std::string::npos;
}

bool HasControlCharacter(const std::string& text) {
  return std::any_of(text.begin(), text.end(), [](char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < ' ' || byte == 0x7f;
  });
}

bool IsAbsolutePath(const std::string& path) {
  return !path.empty() && path.front() == '/' && !HasControlCharacter(path);
}

std::string Wrong(const char* name, const std::string& value, const std::string& allowed) {
  return std::string(name) + " is \"" + value + "\"; " + allowed;
}

// Leaves `number` as it is when the attribute is missing. Returns what is wrong.
std::string ReadNumber(const H7XML::INode& config, const char* name, int most, const char* unit, int& number) {
  const std::string text = config.GetNamedString(name);
  if (text.empty()) {
    return std::string();
  }
  int read = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, read);
  if (error != std::errc() || last != end || read < 1 || read > most) {
    return Wrong(name, text, "allowed are whole numbers from 1 to " + std::to_string(most) + unit);
  }
  number = read;
  return std::string();
}

std::string ReadServer(const H7XML::INode& config, SshServer& server) {
  server.host = config.GetNamedString("host");
  if (server.host.empty() || server.host.front() == '-' || !HasOnly(server.host, "-._:")) {
    return Wrong("host", server.host, "give the name or the address of the controller");
  }
  int port = server.port;
  std::string wrong = ReadNumber(config, "port", 65535, "", port);
  server.port = static_cast<std::uint16_t>(port);
  server.knownHosts = config.GetNamedString("knownHosts");
  if (server.knownHosts.empty()) {
    const char* const home = std::getenv("HOME");
    server.knownHosts = std::string(home != nullptr ? home : "") + "/.ssh/known_hosts";
    if (home == nullptr || home[0] != '/') {
      return "knownHosts is missing, and the host's environment names no home folder; give the absolute path of the file";
    }
  }
  if (wrong.empty() && !IsAbsolutePath(server.knownHosts)) {
    wrong = Wrong("knownHosts", server.knownHosts, "give the absolute path of the file, or leave it out");
  }
  return wrong;
}

std::string ReadLogin(const H7XML::INode& config, SshLogin& login) {
  login.user = config.GetNamedString("user");
  login.key = config.GetNamedString("key");
  if (login.user.empty() || login.user.front() == '-' || !HasOnly(login.user, "-._@+")) {
    return Wrong("user", login.user, "give the name of the account on the controller");
  }
  if (!login.key.empty() && !IsAbsolutePath(login.key)) {
    // What stands there may be the key itself.
    return "key is not a path; give the absolute path of a private key, or leave it out for the SSH agent's keys";
  }
  return std::string();
}

// What a shell would take in a special way is refused, since here it would have no effect, to somebody's surprise.
std::string ReadCommand(const H7XML::INode& config, const char* name, Words& words) {
  const std::string text = config.GetNamedString(name);
  if (!HasOnly(text, " /-._:=,+@%")) {
    return Wrong(
        name, text,
        "give words of letters, digits and /-._:=,+@% with blanks between them; they are not a shell's line, so put "
        "anything else into a script on the controller");
  }
  std::istringstream stream(text);
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return std::string();
}

std::string ReadCommands(const H7XML::INode& config, SshConfiguration& result) {
  std::string wrong = ReadCommand(config, "start", result.start);
  wrong = wrong.empty() ? ReadCommand(config, "stop", result.stop) : wrong;
  wrong = wrong.empty() ? ReadCommand(config, "restart", result.restart) : wrong;
  return wrong.empty() ? ReadCommand(config, "reboot", result.reboot) : wrong;
}

std::string ReadSudo(const H7XML::INode& config, SshConfiguration::Sudo& sudo) {
  const std::string text = config.GetNamedString("sudo");
  if (!text.empty() && text != "no" && text != "commands" && text != "all") {
    return Wrong("sudo", text, "allowed are no, commands and all");
  }
  sudo = text == "all"        ? SshConfiguration::Sudo::All
         : text == "commands" ? SshConfiguration::Sudo::Commands
                              : SshConfiguration::Sudo::No;
  return std::string();
}

std::string ReadTime(const H7XML::INode& config, const char* name, int most, std::chrono::milliseconds& time) {
  int seconds = static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(time).count());
  const std::string wrong = ReadNumber(config, name, most, " (seconds)", seconds);
  time = std::chrono::seconds(seconds);
  return wrong;
}

std::string FindMisspeltAttribute(const H7XML::INode& config) {
  return FindMisspelt(config, {{"host", {"hostName", "address", "server"}},
                               {"port"},
                               {"user", {"userName", "login", "account"}},
                               {"key", {"keyFile", "keyPath", "privateKey", "identity", "identityFile"}},
                               {"knownHosts", {"knownHostsFile", "userKnownHostsFile"}},
                               {"file", {"path", "filePath", "fileName"}},
                               {"start", {"startCommand"}},
                               {"stop", {"stopCommand"}},
                               {"restart", {"restartCommand"}},
                               {"reboot", {"rebootCommand"}},
                               {"sudo", {"become"}},
                               {"connectTimeout", {"connectionTimeout", "timeout"}},
                               {"operationTimeout", {"commandTimeout"}}});
}

std::string ReadFilePath(const H7XML::INode& config, std::string& file) {
  const std::string path = config.GetNamedString("file");
  if (path.empty()) {
    return std::string();
  }
  if (!IsAbsolutePath(path) || path.back() == '/') {
    return Wrong("file", path, "give the absolute path of snmpd.conf on the controller");
  }
  file = path;
  return std::string();
}

}  // namespace

std::string ReadSshConfiguration(const H7XML::INode& config, SshConfiguration& result) {
  const int longestConnecting = 600;
  const int longestOperation = 3600;
  std::string wrong = FindMisspeltAttribute(config);
  wrong = wrong.empty() ? ReadServer(config, result.server) : wrong;
  wrong = wrong.empty() ? ReadLogin(config, result.login) : wrong;
  wrong = wrong.empty() ? ReadFilePath(config, result.file) : wrong;
  wrong = wrong.empty() ? ReadCommands(config, result) : wrong;
  wrong = wrong.empty() ? ReadSudo(config, result.sudo) : wrong;
  wrong = wrong.empty() ? ReadTime(config, "connectTimeout", longestConnecting, result.connectTimeout) : wrong;
  return wrong.empty() ? ReadTime(config, "operationTimeout", longestOperation, result.operationTimeout) : wrong;
}

}  // namespace drivers

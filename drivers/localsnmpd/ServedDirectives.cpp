#include "drivers/localsnmpd/ServedDirectives.h"

#include <cstddef>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

#include "devhost/snmpd/PassiveDirectives.h"

namespace drivers {

namespace {

// None of these makes the daemon read or write a file, runs a program, opens a port, or changes who the daemon is.
bool IsServed(std::string_view keyword) {
  // The daemon sends to the targets of traps, listens to subagents, and asks the machine for its engine's id.
  static const std::set<std::string_view> kOthers = {"trapsink", "trap2sink",    "informsink", "trapsess",
                                                     "master",   "engineidtype", "engineidnic"};
  return devhost::IsPassiveDirective(keyword) || kOthers.count(keyword) != 0;
}

// The reasons for directives that people are likely to have.
const std::map<std::string_view, const char*>& Reasons() {
  static const char kPorts[] = "would open other ports";
  // Once the daemon becomes another user, the system no longer kills it with the host.
  static const char kOutlive[] = "would let the daemon outlive the host";
  static const char kFile[] = "names a file";
  static const char kCode[] = "would run code in the daemon";
  // Whoever can edit the file would run them with the rights of the host.
  static const char kProgram[] = "would run a program";
  static const char kSearch[] =
      "names a file that the daemon would look for; name it with includeFile and its absolute path";
  static const std::map<std::string_view, const char*> kReasons = {
      {"agentaddress", kPorts},   {"smuxsocket", kPorts},    {"smuxpeer", kPorts},      {"proxy", kPorts},
      {"agentuser", kOutlive},    {"agentgroup", kOutlive},  {"include", kSearch},      {"includesearch", kSearch},
      {"persistentdir", kFile},   {"logoption", kFile},      {"file", kFile},           {"logmatch", kFile},
      {"agentxperms", kFile},     {"mibfile", kFile},        {"mibdirs", kFile},        {"com2secunix", kFile},
      {"sendmail_config", kFile}, {"sendmail_stats", kFile}, {"sendmail_queue", kFile}, {"extend", kProgram},
      {"extendfix", kProgram},    {"extend-sh", kProgram},   {"extend-exec", kProgram}, {"exec", kProgram},
      {"execfix", kProgram},      {"sh", kProgram},          {"pass", kProgram},        {"pass_persist", kProgram},
      {"procfix", kProgram},      {"dlmod", kCode},          {"perl", kCode},           {"perlinitfile", kCode}};
  return kReasons;
}

// A target may name the way to it, and some ways are files or programs. What is neither a way over the network nor an
// address is refused; a host before a port must not have the name of another way.
bool IsOnNetwork(std::string_view target) {
  static const std::set<std::string_view> kNetwork = {"udp", "udp6", "udpv6", "udpipv6", "ipv6",
                                                      "tcp", "tcp6", "tcpv6", "tcpipv6"};
  static const std::set<std::string_view> kOthers = {"unix",    "local",    "std",    "stdout", "alias",  "callback",
                                                     "ssh",     "tls",      "tlstcp", "dtls",   "dtls6",  "sshtosnmp",
                                                     "dtlsudp", "dtlsudp6", "ipx",    "pvc",    "aal5pvc"};
  const std::size_t colon = target.find(':');
  if (colon == std::string_view::npos || target.find('/') != std::string_view::npos) {
    return target.find('/') == std::string_view::npos;
  }
  std::string way(target.substr(0, colon));
  for (char& character : way) {
    character = character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
  }
  const bool isAddress = way.find_first_not_of("[0123456789abcdef") == std::string::npos;
  const bool hasPort = target.find_first_not_of("0123456789", colon + 1) == std::string_view::npos;
  return kNetwork.count(way) != 0 || isAddress || (hasPort && kOthers.count(way) == 0);
}

// Whether the target of a sink is on the network: the first word behind options. The daemon cuts these lines at blanks
// alone, whatever quotes there are, and three options have a value. It skips others, and takes what follows one for the
// target.
bool HasNetworkTarget(const devhost::Directive& directive) {
  static const std::set<std::string> kWithValue = {"-profile", "-name", "-tag"};
  std::istringstream words(directive.rest);
  for (std::string word; words >> word;) {
    if (word.front() != '-') {
      return IsOnNetwork(word);
    }
    if (kWithValue.count(word) == 0 || !(words >> word)) {
      return false;
    }
  }
  return false;
}

// It takes a program's options, and some of those name files. Only what says who sends, and how, is let through.
bool IsHarmlessSession(const devhost::Directive& directive) {
  static const std::string_view kWithValue = "vcualAxXlrtneE";
  static const std::set<std::string_view> kOwn = {"-Ci", "-profile", "-name", "-tag"};
  bool isValue = false;
  for (const devhost::DirectiveWord& word : directive.words) {
    const std::string& text = word.text;
    const bool isOption = !isValue && text.substr(0, 1) == "-" && kOwn.count(text) == 0;
    if (isOption ? text.size() < 2 || kWithValue.find(text[1]) == std::string_view::npos : !isValue && !IsOnNetwork(text)) {
      return false;
    }
    isValue = isOption && text.size() == 2;
  }
  return true;
}

}  // namespace

bool IsReplacedByDriver(const devhost::Directive& directive) {
  return directive.keyword == "agentxsocket";
}

std::string WhyNotServed(const devhost::Directive& directive) {
  const auto reason = Reasons().find(directive.keyword);
  if (reason != Reasons().end()) {
    return std::string("this directive ") + reason->second;
  }
  if (!IsServed(directive.keyword)) {
    return "the driver does not know this directive";
  }
  static const std::set<std::string_view> kSinks = {"trapsink", "trap2sink", "informsink"};
  if (kSinks.count(directive.keyword) != 0 && !HasNetworkTarget(directive)) {
    return "it has no target on the network";
  }
  if (directive.keyword == "trapsess" && !IsHarmlessSession(directive)) {
    return "one of its options, or its target, may name a file";
  }
  return std::string();
}

}  // namespace drivers

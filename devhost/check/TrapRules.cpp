#include <arpa/inet.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "devhost/check/Rules.h"

// Where the daemon sends its traps. It cuts these lines at blanks alone: no quotes, no escapes, no comments.
namespace devhost {

namespace {

constexpr char kBlanks[] = " \t\n\v\f\r";
constexpr std::size_t kLongestCommunity = 256;  // one more than that of a community that may ask

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsPort(const std::string& text) {
  return IsDigits(text) && text.size() <= 5 && text.front() != '0' && std::stoul(text) <= 65535;
}

std::string_view WithoutTransport(std::string_view target) {
  const std::size_t colon = target.find(':');
  if (colon == std::string_view::npos) {
    return target;
  }
  constexpr std::string_view kTransports[] = {"udp", "udp6", "udpv6", "udpipv6", "tcp", "tcp6", "tcpv6", "tcpipv6"};
  const bool known =
      std::find(std::begin(kTransports), std::end(kTransports), target.substr(0, colon)) != std::end(kTransports);
  return known ? target.substr(colon + 1) : target;
}

// What follows the colon of these is a path or a name.
bool HasNoPort(std::string_view target) {
  return target.substr(0, 5) == "unix:" || target.substr(0, 6) == "alias:";
}

void ReadTarget(std::string_view target, Sink& sink) {
  if (HasNoPort(target)) {
    sink.host = target;
    return;
  }
  target = WithoutTransport(target);
  const std::size_t bracket = target.rfind(']');
  const std::size_t from = bracket == std::string_view::npos ? 0 : bracket;
  const std::size_t colon = target.find(':', from);
  sink.isBareAddress = bracket == std::string_view::npos && colon != target.rfind(':');
  const bool hasPort = colon != std::string_view::npos && !sink.isBareAddress;
  sink.host = target.substr(0, hasPort ? colon : target.size());
  sink.ownPort = hasPort ? target.substr(colon + 1) : "";
}

bool IsSinkKeyword(std::string_view keyword) {
  return keyword == "trap2sink" || keyword == "trapsink" || keyword == "informsink";
}

// The agent writes an empty target as nothing between its two pairs of spaces.
bool LacksTarget(const Sight& sight) {
  return sight.line.IsInside() && sight.line.text.substr(0, 13) == "trap2sink    ";
}

// The sink of a line that is judged, or null.
const Sink* JudgedSink(const Sight& sight) {
  return sight.sink && !sight.sink->words.empty() && !LacksTarget(sight) ? &*sight.sink : nullptr;
}

// Whether the daemon can make nothing of it, whatever a name server says.
bool IsNoTarget(const Sink& sink) {
  const std::string& target = sink.words.front();
  const bool isNumeric = sink.host.find_first_not_of("0123456789.") == std::string::npos;
  in_addr address = {};
  return target.find_first_of("\"',") != std::string::npos || target == "[" || (sink.host.empty() && target == ":") ||
         (!sink.host.empty() && isNumeric && ::inet_aton(sink.host.c_str(), &address) == 0) ||
         (target.back() == ':' && sink.ownPort.empty() && !sink.isBareAddress && !sink.host.empty());
}

bool IsQuoted(const Sink& sink) {
  return sink.words.size() > 1 && sink.words[1].front() == '"';
}

void JudgeTrapTarget(const Sight& sight, Report& report) {
  if (sight.Keyword() == "trap2sink" && LacksTarget(sight) && !sight.line.setting->rest.empty()) {
    report.Add("a trap target without a host: the daemon takes what follows for the host",
               "give the target a host, or remove it");
  } else if (sight.sink && sight.sink->words.empty()) {
    report.Add("options without a host behind them: the daemon crashes when it reads the line, and does not start",
               "give the target a host, or remove the line");
  } else if (sight.session && sight.session->target.empty() && sight.session->problem.empty()) {
    report.Add("no host to send traps to: the daemon adds no target", "write the host behind the options");
  }
}

void JudgeTrapHost(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink != nullptr && IsNoTarget(*sink)) {
    report.Add("the trap target is neither an address nor the name of a host: no traps reach it",
               "write one address or one name, without quotes and commas, and a port behind the colon if there is one");
  }
}

void JudgeTrapOption(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink != nullptr && sink->hasUnknownOption) {
    report.Add(
        "the daemon skips an option that it does not know here, and takes what follows it for the host, the community and "
        "the "
        "port",
        "write it with trapsess, which has the options of the SNMP programs");
  }
}

void JudgeSession(const Sight& sight, Report& report) {
  if (sight.session && !sight.session->problem.empty()) {
    report.Add("the daemon adds no target for traps: " + sight.session->problem, "correct the line, or remove it");
  }
}

void JudgeSessionName(const Sight& sight, Report& report) {
  const std::optional<TrapSession>& session = sight.session;
  if (session && session->problem.empty() && !session->target.empty() && !session->hasName) {
    report.Add(session->isV3
                   ? "no user (-u) to send as, which version 3 needs; without -v a session is one of version 3: unless "
                     "snmp.conf names one, the daemon adds no target"
                   : "no community (-c) to send with: unless snmp.conf names one, the daemon adds no target",
               session->isV3 ? "write -u and a user, or -v 2c -c and a community" : "write -c and a community");
  }
}

void JudgeTrapPortAsCommunity(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink != nullptr && sink->words.size() == 2 && IsDigits(sink->words[1])) {
    report.Add("a trap target with a port and no community: the daemon takes the port for the community",
               "give the trap target a community, or write the port after the host (HOST:PORT)");
  }
}

void JudgeTrapQuotes(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink == nullptr || !IsQuoted(*sink)) {
    return;
  }
  const bool isOneWord = sink->words[1].size() > 1 && sink->words[1].back() == '"';
  report.Add(isOneWord ? "the daemon does not understand quotes here: it sends them as part of the trap community"
                       : "the daemon does not understand quotes here: it cuts the trap community at the space, takes the "
                         "rest for the port "
                         "and sends no traps to this target",
             "choose a trap community without spaces and quotes");
}

void JudgeTrapPort(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink == nullptr || IsQuoted(*sink)) {
    return;
  }
  const bool wrongField = sink->words.size() > 2 && !IsPort(sink->words[2]);
  if (wrongField || (!sink->ownPort.empty() && !IsPort(sink->ownPort))) {
    report.Add("the trap port is not a number from 1 to 65535: no traps reach this target",
               "give a port from 1 to 65535 without leading zeros, or leave it out for 162");
  }
}

void JudgeTrapPortTwice(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink != nullptr && !IsQuoted(*sink) && sink->words.size() > 2 && !sink->ownPort.empty()) {
    report.Add("the target holds a port, and another one follows: the daemon cannot use both and sends no traps",
               "remove one of the two ports");
  }
}

void JudgeTrapBareAddress(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink != nullptr && !IsQuoted(*sink) && sink->words.size() > 2 && sink->isBareAddress) {
    report.Add(
        "the daemon appends the port to the address, which makes it invalid or another address: no traps reach this target",
        "write the address in brackets: [ADDRESS]");
  }
}

void JudgeTrapCommunityLength(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink != nullptr && sink->words.size() > 1 && sink->words[1].size() > kLongestCommunity) {
    report.Add("the trap community is longer than 256 bytes: no traps reach this target",
               "choose a trap community of at most 256 bytes");
  }
}

void JudgeSinkTwice(const Sight& sight, Report& report) {
  const Sink* const sink = JudgedSink(sight);
  if (sink == nullptr) {
    return;
  }
  const auto found = sight.above.sinks.find(SinkKey(*sink));
  if (found != sight.above.sinks.end()) {
    report.Add("the trap target of " + report.LineName(found->second) + " again: every trap is sent to it once more",
               "remove one of the two");
  }
}

}  // namespace

std::optional<Sink> ReadSink(const Directive& setting) {
  const std::string_view rest = setting.rest;
  // The daemon takes a value that begins with # for a comment.
  if (!IsSinkKeyword(setting.keyword) || rest.empty() || rest.front() == '#') {
    return std::nullopt;
  }
  Sink sink;
  bool isValue = false;
  for (std::size_t at = 0; at < rest.size() && sink.words.size() < 3;) {
    const std::size_t end = std::min(rest.find_first_of(kBlanks, at), rest.size());
    const std::string_view word = rest.substr(at, end - at);
    const bool isOption = !isValue && sink.words.empty() && word.front() == '-';
    if (!isOption && !isValue) {
      sink.words.emplace_back(word);
    }
    isValue = isOption && (word == "-profile" || word == "-name" || word == "-tag");
    sink.hasUnknownOption = sink.hasUnknownOption || (isOption && !isValue);
    at = std::min(rest.find_first_not_of(kBlanks, end), rest.size());
  }
  if (!sink.words.empty()) {
    ReadTarget(sink.words.front(), sink);
  }
  return sink;
}

std::string SinkKey(const Sink& sink) {
  const std::string port = !sink.ownPort.empty() ? sink.ownPort : sink.words.size() > 2 ? sink.words[2] : "162";
  return sink.host + " " + port;
}

std::vector<Rule> TrapRules() {
  using S = Severity;
  return {
      {"trap-without-target", S::Error, JudgeTrapTarget},
      {"trap-host-wrong", S::Error, JudgeTrapHost},
      {"trap-option-unknown", S::Error, JudgeTrapOption},
      {"trap-session-rejected", S::Error, JudgeSession},
      {"trap-session-without-name", S::Warning, JudgeSessionName},
      {"trap-port-as-community", S::Error, JudgeTrapPortAsCommunity},
      {"trap-community-quoted", S::Error, JudgeTrapQuotes},
      {"trap-port-wrong", S::Error, JudgeTrapPort},
      {"trap-port-twice", S::Error, JudgeTrapPortTwice},
      {"trap-address-without-brackets", S::Error, JudgeTrapBareAddress},
      {"trap-community-too-long", S::Error, JudgeTrapCommunityLength},
      {"trap-target-twice", S::Warning, JudgeSinkTwice},
  };
}

}  // namespace devhost

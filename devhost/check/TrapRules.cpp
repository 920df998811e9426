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

void ReadTarget(std::string_view target, Sink& sink) {
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
  return sight.sink && !LacksTarget(sight) ? &*sight.sink : nullptr;
}

bool IsQuoted(const Sink& sink) {
  return sink.words.size() > 1 && sink.words[1].front() == '"';
}

void JudgeTrapTarget(const Sight& sight, Report& report) {
  if (sight.Keyword() == "trap2sink" && LacksTarget(sight) && !sight.line.setting->rest.empty()) {
    report.Add("a trap target without a host: the daemon takes what follows for the host",
               "give the target a host, or remove it");
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
  for (std::size_t at = 0; at < rest.size() && sink.words.size() < 3;) {
    const std::size_t end = std::min(rest.find_first_of(kBlanks, at), rest.size());
    sink.words.emplace_back(rest.substr(at, end - at));
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

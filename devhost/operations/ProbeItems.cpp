#include "devhost/operations/ProbeItems.h"

#include <algorithm>
#include <iterator>

#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Verdict = ProbeItem::Verdict;

const Oid kSysDescr = {1, 3, 6, 1, 2, 1, 1, 1, 0};
const Oid kSysName = {1, 3, 6, 1, 2, 1, 1, 5, 0};

constexpr char kSent[] = "sent";
constexpr std::chrono::milliseconds kObjection(300);  // that of a receiver on a slow line

struct SystemText {
  const char* name;
  const char* setting;
  const char* keyword;
  Oid object;
};

const SystemText kSystemTexts[] = {
    {"contact", "snmpSysContactSetting", "syscontact", {1, 3, 6, 1, 2, 1, 1, 4, 0}},
    {"name", "snmpSysNameSetting", "sysname", kSysName},
    {"location", "snmpSysLocationSetting", "syslocation", {1, 3, 6, 1, 2, 1, 1, 6, 0}},
};

const std::size_t kTextCount = std::size(kSystemTexts);
const std::size_t kNameAt = 1;

std::string CommunityOf(const XmlElement& settings, bool writes) {
  return AskedCommunity(SettingText(settings, writes ? "snmpCommunityWriteSetting" : "snmpCommunityReadSetting"));
}

bool IsGood(const SnmpReply& reply) {
  return reply.end == UdpEnd::Answered && reply.error == 0;
}

// The answer to the first community that works.
const SnmpReply& AnswerToAny(const Question& question) {
  return IsGood(question.answers.byRead) ? question.answers.byRead : question.answers.byWrite;
}

bool LetsRead(const std::optional<std::string>& name, const SnmpReply& reply) {
  return IsGood(reply) && name.has_value();
}

// The write community is tried on an object that nobody can set, which a daemon says to those only who might set others.
bool LetsWrite(const SnmpReply& reply) {
  return reply.end == UdpEnd::Answered && reply.error == kNotWritable;
}

// An object in the daemon's table of listening sockets, for "tcp:127.0.0.1:705"; empty for other sockets.
Oid ListenerObject(const std::string& socket) {
  const std::string_view text = socket;
  const auto address = StartsWith(text, "tcp:") ? ReadUdpAddress(text.substr(4), "705")
                                                : ReadUdpAddress(StartsWith(text, "unix:") ? "" : text, "705");
  const auto resolved = address && !address->isV6 ? Resolve(*address) : std::nullopt;
  if (!resolved || socket.front() == '/') {
    return {};
  }
  Oid object = {1, 3, 6, 1, 2, 1, 6, 20, 1, 4, 1, 4};  // tcpListenerProcess, of an IPv4 address
  const std::string numeric = resolved->Text().substr(4);
  for (std::size_t at = 0; at < numeric.size();) {
    object.push_back(std::stoul(numeric.substr(at)));
    at = std::min(numeric.find_first_of(".:", at), numeric.size() - 1) + 1;
  }
  return object;
}

const XmlElement* Child(const XmlElement& element, std::string_view name) {
  const auto found = std::find_if(element.children.begin(), element.children.end(),
                                  [name](const XmlElement& child) { return child.name == name; });
  return found == element.children.end() ? nullptr : &*found;
}

// The child's text, "" when it is missing.
std::string ChildText(const XmlElement& element, std::string_view name) {
  const XmlElement* const child = Child(element, name);
  return child == nullptr ? "" : child->text;
}

// What became of a test trap, in words.
std::string SendTestTrap(const Question& question, const XmlElement& target, const UdpAddress& address) {
  const auto resolved = Resolve(address);
  if (!resolved) {
    return "name not found";
  }
  // An example that the daemon's makers define: receivers know it, and it alarms nobody.
  const Oid heartbeat = {1, 3, 6, 1, 4, 1, 8072, 2, 3, 0, 1};
  const SnmpClient client(*resolved, AskedCommunity(ChildText(target, "community")), question.patience);
  const std::string name = SettingText(question.settings, "snmpSysNameSetting");
  const UdpEnd end =
      client.SendTrap(heartbeat, {{kSysName, "devhost probe of " + (name.empty() ? "a device" : name)}}, kObjection);
  return end == UdpEnd::Silent ? kSent : Describe(end);
}

// `shown` is the target as it may be shown.
ProbeItem ProbeTarget(const Question& question, const XmlElement& target, const XmlElement& shown, std::size_t number) {
  const std::string host = ChildText(target, "target");
  const std::string port = ChildText(target, "port");
  const auto address = ReadUdpAddress(host, port.empty() ? "162" : port);
  const bool isShown = ChildText(shown, "target") == host;
  ProbeItem item;
  item.name = isShown ? "trap to " + (address ? TextOf(*address) : host) : "trap target " + std::to_string(number);
  if (!address && (StartsWith(host, "tcp") || StartsWith(host, "unix:"))) {
    item.verdict = Verdict::NotAsked;
    item.served = "not sent: only UDP is tried";
    return item;
  }
  item.served = address ? SendTestTrap(question, target, *address) : "not an address";
  item.verdict = item.served == kSent ? Verdict::Good : Verdict::Differs;
  return item;
}

}  // namespace

std::string SettingText(const XmlElement& settings, std::string_view name) {
  return ChildText(settings, name);
}

std::string AskedCommunity(const std::string& text) {
  const bool isQuoted = text.size() > 2 && text.front() == '"' && text.back() == '"' && text.find(' ') != std::string::npos;
  return isQuoted ? text.substr(1, text.size() - 2) : text;
}

bool HasCommunity(const XmlElement& settings) {
  return !CommunityOf(settings, false).empty() || !CommunityOf(settings, true).empty();
}

std::vector<bool> AskAccess(const SocketAddress& daemon, const std::vector<Access>& accesses, const Patience& patience) {
  std::vector<SnmpRequest> requests;
  requests.reserve(accesses.size());
  for (const Access& access : accesses) {
    requests.push_back(access.writes ? SnmpRequest{access.community, {kSysDescr}, ""}
                                     : SnmpRequest{access.community, {kSysName}});
  }
  const std::vector<SnmpReply> replies = AskAtOnce(daemon, requests, patience);
  std::vector<bool> works;
  works.reserve(accesses.size());
  for (std::size_t at = 0; at < accesses.size(); ++at) {
    works.push_back(accesses[at].writes ? LetsWrite(replies[at]) : LetsRead(replies[at].values.front(), replies[at]));
  }
  return works;
}

Answers AskDaemon(const SocketAddress& daemon, const XmlElement& settings, const Explanation& file,
                  const Patience& patience) {
  std::vector<Oid> objects;
  for (const SystemText& text : kSystemTexts) {
    objects.push_back(text.object);
  }
  const Oid listener = ListenerObject(file.LastValue("agentxsocket"));
  if (!listener.empty()) {
    objects.push_back(listener);
  }
  const std::string write = CommunityOf(settings, true);
  std::vector<SnmpReply> replies =
      AskAtOnce(daemon, {{CommunityOf(settings, false), objects}, {write, objects}, {write, {kSysDescr}, ""}}, patience);
  return {std::move(replies[0]), std::move(replies[1]), std::move(replies[2])};
}

std::vector<ProbeItem> ProbeTexts(const Question& question) {
  const SnmpReply& reply = AnswerToAny(question);
  std::vector<ProbeItem> items;
  items.reserve(kTextCount);
  for (std::size_t at = 0; at < kTextCount; ++at) {
    const SystemText& text = kSystemTexts[at];
    const std::string configured = SettingText(question.settings, text.setting);
    ProbeItem item;
    item.name = text.name;
    item.configured = SettingText(question.shown, text.setting);
    if (!IsGood(reply)) {
      item.verdict = configured.empty() ? Verdict::NotAsked : Verdict::Differs;
      item.served = "not served to the configured communities";
      items.push_back(std::move(item));
      continue;
    }
    const std::string served = reply.values[at].value_or("");
    item.served = question.masker.Text(served, WrittenBy::Others);
    item.verdict = configured.empty() ? Verdict::NotAsked : served == configured ? Verdict::Good : Verdict::Differs;
    item.reason = item.verdict == Verdict::Differs ? question.file.Of(text.keyword) : "";
    items.push_back(std::move(item));
  }
  return items;
}

std::vector<ProbeItem> ProbeCommunities(const Question& question) {
  std::vector<ProbeItem> items;
  const auto add = [&](const char* name, const char* setting, const char* keyword, bool writes) {
    ProbeItem item;
    item.name = name;
    item.configured = SettingText(question.shown, setting);
    const Answers& answers = question.answers;
    if (CommunityOf(question.settings, writes).empty()) {
      item.verdict = Verdict::NotAsked;
      item.served = "not set";
    } else if (writes ? LetsWrite(answers.set) : LetsRead(answers.byRead.values[kNameAt], answers.byRead)) {
      item.served = "works";
    } else {
      item.verdict = Verdict::Differs;
      item.served = "does not work";
      item.reason = question.file.Of(keyword);
    }
    items.push_back(std::move(item));
  };
  add("read community", "snmpCommunityReadSetting", "rocommunity", false);
  add("write community", "snmpCommunityWriteSetting", "rwcommunity", true);
  return items;
}

ProbeItem ProbeAgentX(const Question& question) {
  ProbeItem item;
  item.name = "AgentX socket";
  item.verdict = Verdict::NotAsked;
  item.configured = question.file.LastValue("agentxsocket");
  const Oid object = item.configured.empty() ? Oid() : ListenerObject(item.configured);
  if (object.empty()) {
    item.served = item.configured.empty() ? "not set" : "not asked: only TCP sockets can be";
    return item;
  }
  const SnmpReply& reply = AnswerToAny(question);
  if (!IsGood(reply)) {
    item.served = "not served to the configured communities";
    return item;
  }
  const bool listens = reply.values.size() > kTextCount && reply.values[kTextCount].has_value();
  item.verdict = listens ? Verdict::Good : Verdict::Differs;
  item.served = listens ? "listens" : "nobody listens";
  return item;
}

std::vector<ProbeItem> ProbeTargets(const Question& question) {
  const XmlElement none;
  const XmlElement* const targets = Child(question.settings, "snmpTrapTargets");
  const XmlElement* const shown = Child(question.shown, "snmpTrapTargets");
  std::vector<ProbeItem> items;
  items.reserve(targets == nullptr ? 0 : targets->children.size());
  for (std::size_t at = 0; targets != nullptr && at < targets->children.size(); ++at) {
    const bool isThere = shown != nullptr && at < shown->children.size();
    items.push_back(ProbeTarget(question, targets->children[at], isThere ? shown->children[at] : none, at + 1));
  }
  return items;
}

}  // namespace devhost

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

// The communities that are set, those for reading first.
std::vector<std::string> CommunitiesOf(const XmlElement& settings) {
  std::vector<std::string> communities;
  for (const char* name : {"snmpCommunityReadSetting", "snmpCommunityWriteSetting"}) {
    const std::string community = AskedCommunity(SettingText(settings, name));
    if (!community.empty()) {
      communities.push_back(community);
    }
  }
  return communities;
}

// What the daemon has of the objects: by the first community that it answers to.
SnmpReply GetWithAny(const Question& question, const std::vector<Oid>& objects) {
  SnmpReply reply;
  for (const std::string& community : CommunitiesOf(question.settings)) {
    reply = SnmpClient(question.daemon, community, question.patience).Get(objects);
    if (reply.end == UdpEnd::Answered && reply.error == 0) {
      break;
    }
  }
  return reply;
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

bool LetsRead(const SocketAddress& daemon, const std::string& community, const Patience& patience) {
  const SnmpReply reply = SnmpClient(daemon, community, patience).Get({kSysName});
  return reply.end == UdpEnd::Answered && reply.error == 0 && reply.values.front().has_value();
}

bool LetsWrite(const SocketAddress& daemon, const std::string& community, const Patience& patience) {
  const SnmpReply reply = SnmpClient(daemon, community, patience).Set(kSysDescr, "");
  return reply.end == UdpEnd::Answered && reply.error == kNotWritable;
}

bool HasCommunity(const XmlElement& settings) {
  return !CommunitiesOf(settings).empty();
}

std::vector<ProbeItem> ProbeTexts(const Question& question) {
  std::vector<Oid> objects;
  objects.reserve(std::size(kSystemTexts));
  for (const SystemText& text : kSystemTexts) {
    objects.push_back(text.object);
  }
  const SnmpReply reply = GetWithAny(question, objects);
  std::vector<ProbeItem> items;
  items.reserve(objects.size());
  for (std::size_t at = 0; at < objects.size(); ++at) {
    const SystemText& text = kSystemTexts[at];
    const std::string configured = SettingText(question.settings, text.setting);
    ProbeItem item;
    item.name = text.name;
    item.configured = SettingText(question.shown, text.setting);
    if (reply.end != UdpEnd::Answered || reply.error != 0) {
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
    const std::string community = AskedCommunity(SettingText(question.settings, setting));
    ProbeItem item;
    item.name = name;
    item.configured = SettingText(question.shown, setting);
    if (community.empty()) {
      item.verdict = Verdict::NotAsked;
      item.served = "not set";
    } else if ((writes ? LetsWrite : LetsRead)(question.daemon, community, question.patience)) {
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
  const SnmpReply reply = GetWithAny(question, {object});
  if (reply.end != UdpEnd::Answered || reply.error != 0) {
    item.served = "not served to the configured communities";
    return item;
  }
  item.verdict = reply.values.front() ? Verdict::Good : Verdict::Differs;
  item.served = reply.values.front() ? "listens" : "nobody listens";
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

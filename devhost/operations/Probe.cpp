#include "devhost/operations/Probe.h"

#include <algorithm>
#include <iterator>

#include "devhost/operations/DaemonAddress.h"
#include "devhost/operations/History.h"
#include "devhost/operations/ProbeItems.h"

namespace devhost {

namespace {

// Learns what is secret in all that the report may quote.
void LearnSecrets(const Target& target, const DeviceCopy& now, Masker& masker) {
  masker.Xml(target.chosen.device.configXml);
  masker.Xml(now.settings);
  masker.Config(now.file);
}

UdpEnd AskWhetherItIsThere(const SocketAddress& daemon, const Patience& patience) {
  const Discovery discovery(daemon.Get(), daemon.size);
  UdpEnd end = UdpEnd::Silent;
  for (int tries = 0; tries < patience.tries && end == UdpEnd::Silent; ++tries) {
    end = discovery.Ask(patience.wait);
  }
  return end;
}

void Append(std::vector<ProbeItem> more, std::vector<ProbeItem>& items) {
  std::move(more.begin(), more.end(), std::back_inserter(items));
}

// Why the daemon was not found there.
void Miss(const char* what, const DaemonAddress& found, ProbeReport& report) {
  if (!found.remark.empty()) {
    report.messages.push_back(found.remark);
  }
  report.messages.push_back("the daemon at " + report.address + " cannot be asked: " + what);
}

void AskEverything(const Question& question, bool hasOwnAgentX, bool sendsTraps, ProbeReport& report) {
  Append(ProbeTexts(question), report.items);
  Append(ProbeCommunities(question), report.items);
  if (!hasOwnAgentX) {
    report.items.push_back(ProbeAgentX(question));
  }
  if (sendsTraps) {
    Append(ProbeTargets(question), report.items);
  }
  Conclude(report);
}

}  // namespace

std::optional<ReachedDaemon> Reach(const Target& target, const ProbeMeans& means, const std::string& file,
                                   ProbeReport& report) {
  DaemonAddress found = FindDaemonAddress(target.chosen.device, file);
  if (!means.address.empty()) {
    found.udp = ReadDaemonAddress(means.address);
    found.remark.clear();
  }
  if (!found.udp) {
    report.messages.push_back(found.remark);
    return std::nullopt;
  }
  report.address = TextOf(*found.udp);
  const auto daemon = Resolve(*found.udp);
  if (!daemon) {
    Miss("name not found", found, report);
    return std::nullopt;
  }
  const UdpEnd end = AskWhetherItIsThere(*daemon, means.patience);
  if (end != UdpEnd::Answered) {
    Miss(Describe(end), found, report);
    return std::nullopt;
  }
  return ReachedDaemon{*daemon, found.hasOwnAgentX};
}

void Conclude(ProbeReport& report) {
  const auto differs = [](const ProbeItem& item) { return item.verdict == ProbeItem::Verdict::Differs; };
  const bool isAsConfigured = std::none_of(report.items.begin(), report.items.end(), differs);
  report.verdict = isAsConfigured ? ProbeReport::Verdict::AsConfigured : ProbeReport::Verdict::Differs;
}

ProbeReport ProbeDevice(const Target& target, const ProbeMeans& means) {
  ProbeReport report;
  const DeviceLook look = LookAtDevice(target);
  report.messages = look.messages;
  if (!look.problem.empty()) {
    report.messages.push_back(look.problem);
    return report;
  }
  const auto daemon = Reach(target, means, look.now.file, report);
  if (!daemon) {
    return report;
  }
  Masker masker(target.showSecrets);
  LearnSecrets(target, look.now, masker);
  const XmlElement settings = ReadXml(look.now.settings);
  if (!HasCommunity(settings)) {
    report.messages.push_back("no community is set on " + target.chosen.device.name + ": nobody can ask what is served");
    return report;
  }
  const Explanation file(look.now.file, target.showSecrets);
  const XmlElement shown = ReadXml(masker.Xml(look.now.settings));
  AskEverything({daemon->address, settings, shown, file, means.patience, masker}, daemon->hasOwnAgentX, means.sendsTraps,
                report);
  return report;
}

}  // namespace devhost

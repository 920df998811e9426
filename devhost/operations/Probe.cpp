#include "devhost/operations/Probe.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>
#include <utility>

#include "devhost/operations/DaemonAddress.h"
#include "devhost/operations/History.h"
#include "devhost/operations/IncludedParts.h"
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
void Miss(const char* what, ProbeReport& report) {
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
  DaemonAddress found = target.file.empty() ? FindDaemonAddress(target.chosen.device, file) : AddressOfFile(file);
  if (!means.address.empty()) {
    found.udp = ReadDaemonAddress(means.address);
    found.isOutOfReach = false;
  }
  report.address = found.udp ? TextOf(*found.udp) : "";
  if (!found.udp || found.isOutOfReach) {
    report.messages.push_back(found.remark + (means.advice.empty() ? "" : "; " + means.advice));
    return std::nullopt;
  }
  const auto daemon = Resolve(*found.udp);
  if (!daemon) {
    Miss("name not found", report);
    return std::nullopt;
  }
  const UdpEnd end = AskWhetherItIsThere(*daemon, means.patience);
  if (end != UdpEnd::Answered) {
    Miss(Describe(end), report);
    return std::nullopt;
  }
  return ReachedDaemon{*daemon, found.hasOwnAgentX};
}

bool IsWrong(ProbeReport::Verdict verdict) {
  return verdict == ProbeReport::Verdict::Differs || verdict == ProbeReport::Verdict::Gone;
}

void Conclude(ProbeReport& report) {
  const auto differs = [](const ProbeItem& item) { return item.verdict == ProbeItem::Verdict::Differs; };
  const bool isAsConfigured = std::none_of(report.items.begin(), report.items.end(), differs);
  report.verdict = isAsConfigured ? ProbeReport::Verdict::AsConfigured : ProbeReport::Verdict::Differs;
}

ProbeReport ProbeDevice(const Target& target, const ProbeMeans& means) {
  return ProbeDevice(target, means, LookAtDevice(target));
}

ProbeReport ProbeDevice(const Target& target, const ProbeMeans& means, const DeviceLook& look) {
  ProbeReport report;
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
  const std::string path = PathOf(target, look.now.file);
  const Explanation file(look.now.file, path, target.showSecrets);
  if (std::string unread = UnreadParts(look.now.file, path); !unread.empty()) {
    report.messages.push_back(std::move(unread));
  }
  const XmlElement shown = ReadXml(masker.Xml(look.now.settings));
  const Answers answers = AskDaemon(daemon->address, settings, file, means.patience);
  AskEverything({answers, settings, shown, file, means.patience, masker}, daemon->hasOwnAgentX, means.sendsTraps, report);
  return report;
}

bool DoesDaemonAnswer(const Target& target, const ProbeMeans& means, const std::string& file) {
  ProbeMeans once = means;
  once.patience.tries = 1;
  ProbeReport ignored;
  try {
    return Reach(target, once, file, ignored).has_value();
  } catch (const SnmpError&) {
    return false;
  }
}

ProbeReport ProbeAfterChange(const Target& target, const ProbeMeans& means, const DeviceLook& look, bool answeredBefore) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + means.comeback;
  while (answeredBefore && !DoesDaemonAnswer(target, means, look.now.file)) {
    if (Clock::now() >= deadline) {
      ProbeReport report;
      Reach(target, means, look.now.file, report);
      report.verdict = ProbeReport::Verdict::Gone;
      report.messages = {"the daemon at " + report.address + " answered before the change, and does not answer after it"};
      return report;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return ProbeDevice(target, means, look);
}

}  // namespace devhost

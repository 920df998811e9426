#include "devhost/commands/ProbeOutput.h"

#include <algorithm>

#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Verdict = ProbeItem::Verdict;

bool IsText(const ProbeItem& item) {
  return item.name == "contact" || item.name == "name" || item.name == "location";
}

// What was found, in words. Of a text that is as configured, one value says it all.
std::string FoundText(const ProbeItem& item) {
  if (!IsText(item)) {
    const bool isSocket = item.name == "AgentX socket" && !item.configured.empty();
    return (isSocket ? item.configured + ": " : "") + OneLine(item.served);
  }
  if (item.verdict == Verdict::Good) {
    return Quoted(item.served);
  }
  return (item.configured.empty() ? "not set" : "configured " + Quoted(item.configured)) + ", served " + Quoted(item.served);
}

}  // namespace

std::string ProbeText(const ProbeReport& report, const std::string& device) {
  std::size_t width = 0;
  std::string differing;
  for (const ProbeItem& item : report.items) {
    width = std::max(width, item.name.size());
    if (item.verdict == Verdict::Differs) {
      differing += (differing.empty() ? "" : ", ") + item.name;
    }
  }
  std::string text;
  for (const ProbeItem& item : report.items) {
    const char* const mark = item.verdict == Verdict::Good      ? "ok      "
                             : item.verdict == Verdict::Differs ? "DIFFERS "
                                                                : "-       ";
    text += mark + OneLine(item.name) + std::string(width - item.name.size() + 2, ' ') + FoundText(item) +
            (item.reason.empty() ? "" : "; " + OneLine(item.reason)) + "\n";
  }
  if (report.verdict != ProbeReport::Verdict::Unknown) {
    text += device + " at " + report.address +
            (differing.empty() ? " is as configured\n" : " differs: " + OneLine(differing) + "\n");
  }
  return text;
}

std::string ShortProbeText(const ProbeReport& report, const std::string& device) {
  const std::string text = ProbeText(report, device);
  return report.verdict == ProbeReport::Verdict::AsConfigured ? text.substr(text.rfind('\n', text.size() - 2) + 1) : text;
}

ExitStatus StatusOf(ProbeReport::Verdict verdict) {
  return verdict == ProbeReport::Verdict::AsConfigured ? ExitStatus::Good
         : verdict == ProbeReport::Verdict::Differs    ? ExitStatus::Failed
                                                       : ExitStatus::Wrong;
}

}  // namespace devhost

#include "config/SectionWriter.h"

namespace managed_section {
namespace {

// The number under 1.3.6.1.4.1 comes from the build (cache variable SNMP_ENTERPRISE_NUMBER).
const char kSysObjectIdLine[] = "sysObjectID  1.3.6.1.4.1." SNMP_ENTERPRISE_NUMBER "\n";

// A community is quoted when it holds a space; a tab does not count.
void AppendCommunity(std::string& out, const std::string& community) {
  if (community.find(' ') != std::string::npos) {
    out.append(1, '"').append(community).append(1, '"');
  } else {
    out.append(community);
  }
}

void AppendCommunityLine(std::string& out, const char* keyword, const std::string& community) {
  if (!community.empty()) {
    out.append(keyword).append("  ");
    AppendCommunity(out, community);
    out.append(1, '\n');
  }
}

// The value is never quoted, even with spaces: here the daemon takes the rest of the line as the value.
void AppendSystemLine(std::string& out, const char* keyword, const std::string& value) {
  if (!value.empty()) {
    out.append(keyword).append("  ").append(value).append(1, '\n');
  }
}

void AppendTrapLine(std::string& out, const TrapTarget& trap) {
  out.append("trap2sink  ").append(trap.target);
  if (!trap.community.empty()) {
    out.append("  ");
    AppendCommunity(out, trap.community);
  }
  if (!trap.port.empty()) {
    out.append("  ").append(trap.port);
  }
  out.append(1, '\n');
}

}  // namespace

std::string TimeStamp(std::time_t now) {
  char buffer[256] = "";
  const std::tm* const local = std::localtime(&now);
  if (local == nullptr || std::strftime(buffer, sizeof buffer, "%A, %B, %d %Y at %H:%M:%S", local) == 0) {
    return std::string();
  }
  return buffer;
}

std::string Write(const Texts& texts, const Settings& settings, const std::string& timeStamp) {
  std::string out;
  out.append(texts.header).append(timeStamp).append("\n\n");

  out.append(texts.accessControl);
  AppendCommunityLine(out, "rocommunity", settings.communityRead);
  AppendCommunityLine(out, "rwcommunity", settings.communityWrite);

  // The AgentX lines are written even with an empty value.
  out.append("\n").append(texts.agentMode).append("master  agentx\n");
  out.append("agentXTimeout  ").append(settings.agentXTimeout).append("\n");
  out.append("agentXRetries  ").append(settings.agentXRetries).append("\n");
  out.append("agentXSocket  tcp:127.0.0.1:705\n");

  out.append("\n").append(texts.hostMonitoring).append("includeAllDisks  10%\n");

  out.append("\n").append(texts.systemInformation).append(kSysObjectIdLine).append("sysServices  72\n");
  AppendSystemLine(out, "sysContact", settings.sysContact);
  AppendSystemLine(out, "sysLocation", settings.sysLocation);
  AppendSystemLine(out, "sysName", settings.sysName);

  out.append("\n").append(texts.trapDestinations);
  for (const TrapTarget& trap : settings.trapTargets) {
    AppendTrapLine(out, trap);
  }

  out.append("\n").append(texts.trailer);
  return out;
}

}  // namespace managed_section

#include "devhost/check/Rules.h"

#include <algorithm>

namespace devhost {

namespace {

constexpr std::size_t kMostRemembered = 100000;

// Directives other than communities that give access, and files that may do so.
bool LetsIn(std::string_view keyword) {
  constexpr std::string_view kOthers[] = {"rouser",  "rwuser",        "com2sec",    "com2sec6",      "com2secunix",
                                          "access",  "authcommunity", "authuser",   "authgroup",     "authaccess",
                                          "include", "includefile",   "includedir", "includesearch", "includeoptional"};
  return IsCommunityKeyword(keyword) || std::find(std::begin(kOthers), std::end(kOthers), keyword) != std::end(kOthers);
}

// Settings of which a section has one line.
bool IsSectionSetting(std::string_view keyword) {
  constexpr std::string_view kOthers[] = {"sysservices", "sysobjectid", "agentxsocket", "agentxtimeout",
                                          "master",      "rocommunity", "rwcommunity"};
  return IsSystemText(keyword) || std::find(std::begin(kOthers), std::end(kOthers), keyword) != std::end(kOthers);
}

// Directives of which the rules look at more than the name.
bool IsJudged(std::string_view keyword) {
  constexpr std::string_view kOthers[] = {"agentxretries", "trap2sink", "includealldisks", "createuser"};
  return IsSectionSetting(keyword) || IsCommunityKeyword(keyword) ||
         std::find(std::begin(kOthers), std::end(kOthers), keyword) != std::end(kOthers);
}

// Adds what the line says to what the lines below it are compared with.
void Remember(const Sight& sight, History& history) {
  const ConfigLine& line = sight.line;
  history.hasNul = history.hasNul || Contains(line.text, std::string_view("\0", 1));
  if (history.firstText == 0 && !TrimmedView(WithoutByteOrderMark(line.text)).empty()) {
    history.firstText = line.number;
  }
  if (!line.setting) {
    return;
  }
  const Directive& setting = *line.setting;
  const bool isUnknown = sight.circumstances.Directives().daemon.count(setting.keyword) == 0;
  history.unjudged += isUnknown || IsJudged(setting.keyword) ? 0 : 1;
  history.hasAccess = history.hasAccess || LetsIn(setting.keyword);
  if (line.IsInside() && line.section == sight.layout.firstStart && IsSectionSetting(setting.keyword)) {
    History::Value& value = history.section[setting.keyword];
    value = {value.first == 0 ? line.number : value.first, line.number, setting.rest};
  }
  if (!sight.grantKey.empty() && history.communities.size() < kMostRemembered) {
    history.communities.emplace(sight.grantKey, ReadGrant(line));
  }
  if (sight.sink && history.sinks.size() < kMostRemembered) {
    history.sinks.emplace(SinkKey(*sight.sink), line.number);
  }
}

}  // namespace

const std::vector<Rule>& Rules() {
  static const std::vector<Rule> rules = [] {
    std::vector<Rule> all;
    for (const auto& some :
         {MarkerRules(), ReaderRules(), CommunityRules(), TrapRules(), ValueRules(), EncodingRules(), DirectiveRules()}) {
      all.insert(all.end(), some.begin(), some.end());
    }
    return all;
  }();
  return rules;
}

std::vector<std::string> RuleNames() {
  std::vector<std::string> names;
  for (const Rule& rule : Rules()) {
    names.emplace_back(rule.name);
  }
  names.insert(names.end(), {kFileModeRule, kLineFeedRule, kDaemonRule});
  return names;
}

std::size_t JudgeText(std::string_view text, Report& report, const Circumstances& circumstances) {
  const Layout layout = LayOut(text);
  History history;
  // Cut into lines at bytes, such a text makes no sense.
  ForEachLine(layout.isUtf16 ? std::string_view() : text, [&](const ConfigLine& line) {
    const ReadBack read = line.IsInside() ? ReadLineBack(line.text) : ReadBack();
    const std::string grantKey = line.setting ? GrantKey(*line.setting) : "";
    const std::optional<Sink> sink = line.setting ? ReadSink(*line.setting) : std::nullopt;
    const Sight sight{line, read, layout, history, grantKey, sink, circumstances};
    for (const Rule& rule : Rules()) {
      report.Begin(rule.name, rule.severity, line.number);
      rule.judge(sight, report);
    }
    Remember(sight, history);
  });
  return history.unjudged;
}

}  // namespace devhost

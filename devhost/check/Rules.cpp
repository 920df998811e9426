#include "devhost/check/Rules.h"

#include <algorithm>

namespace devhost {

namespace {

constexpr std::size_t kMostRemembered = 100000;

// Others than communities that let somebody in, and files that may do so.
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

}  // namespace

const std::vector<Rule>& Rules() {
  using S = Severity;
  static const std::vector<Rule> rules = {
      {"start-marker-without-end", S::Error, JudgeStartWithoutEnd},
      {"end-marker-without-start", S::Warning, JudgeEndWithoutStart},
      {"markers-reversed", S::Error, JudgeMarkersReversed},
      {"start-marker-again", S::Error, JudgeStartAgain},
      {"end-marker-again", S::Warning, JudgeEndAgain},
      {"marker-in-text", S::Error, JudgeMarkerInText},
      {"text-above-section", S::Error, JudgeTextAbove},
      {"line-after-trailer", S::Error, JudgeLineAfterTrailer},
      {"foreign-line-in-section", S::Error, JudgeForeignLineInside},
      {"retries-go-back", S::Warning, JudgeRetries},
      {"old-community", S::Error, JudgeOldCommunity},
      {"overrides-section", S::Error, JudgeOverride},
      {"will-override-section", S::Warning, JudgeFutureOverride},
      {"comment-read-as-setting", S::Error, JudgeCommentRead},
      {"keyword-in-value", S::Error, JudgeKeywordInValue},
      {"keyword-lost", S::Note, JudgeKeywordLost},
      {"blanks-misread", S::Error, JudgeBlanks},
      {"carriage-return", S::Warning, JudgeCarriageReturn},
      {"setting-twice", S::Error, JudgeSettingTwice},
      {"community-quoted-again", S::Note, JudgeQuotesAgain},
      {"trap-read-as-community", S::Note, JudgeTrapReadBack},
      {"community-in-pairs-of-quotes", S::Error, JudgeCommunityInPairs},
      {"community-misread", S::Error, JudgeCommunityMisread},
      {"community-of-several-words", S::Error, JudgeCommunityWords},
      {"community-too-long", S::Error, JudgeCommunityLength},
      {"write-community-like-read", S::Error, JudgeWriteLikeRead},
      {"first-community-wins", S::Error, JudgeFirstGrantWins},
      {"no-access", S::Warning, JudgeNoAccess},
      {"trap-without-target", S::Error, JudgeTrapTarget},
      {"trap-port-as-community", S::Error, JudgeTrapPortAsCommunity},
      {"trap-community-quoted", S::Error, JudgeTrapQuotes},
      {"trap-port-wrong", S::Error, JudgeTrapPort},
      {"trap-port-twice", S::Error, JudgeTrapPortTwice},
      {"trap-address-without-brackets", S::Error, JudgeTrapBareAddress},
      {"trap-community-too-long", S::Error, JudgeTrapCommunityLength},
      {"trap-target-twice", S::Warning, JudgeSinkTwice},
      {"value-begins-with-hash", S::Error, JudgeHash},
      {"value-missing", S::Error, JudgeMissingValue},
      {"text-too-long", S::Error, JudgeTextLength},
      {"agentx-timeout", S::Error, JudgeAgentXTimeout},
      {"nul-byte", S::Error, JudgeNul},
  };
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

void Remember(const Sight& sight, History& history) {
  const ConfigLine& line = sight.line;
  history.hasNul = history.hasNul || Contains(line.text, std::string_view("\0", 1));
  if (history.firstText == 0 && !TrimmedView(line.text).empty()) {
    history.firstText = line.number;
  }
  if (!line.setting) {
    return;
  }
  const Directive& setting = *line.setting;
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

void JudgeText(std::string_view text, Report& report) {
  const Layout layout = LayOut(text);
  History history;
  ForEachLine(text, [&](const ConfigLine& line) {
    const ReadBack read = line.IsInside() ? ReadLineBack(line.text) : ReadBack();
    const std::string grantKey = line.setting ? GrantKey(*line.setting) : "";
    const std::optional<Sink> sink = line.setting ? ReadSink(*line.setting) : std::nullopt;
    const Sight sight{line, read, layout, history, grantKey, sink};
    for (const Rule& rule : Rules()) {
      report.Begin(rule.name, rule.severity);
      rule.judge(sight, report);
    }
    Remember(sight, history);
  });
}

}  // namespace devhost

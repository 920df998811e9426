#include "devhost/check/Rules.h"

#include <algorithm>

namespace devhost {

namespace {

constexpr std::size_t kMostRemembered = 100000;

// Whether the line lets somebody in by itself.
bool LetsIn(const Sight& sight) {
  return sight.access && sight.access->problem.empty() &&
         (sight.access->kind == AccessLine::Kind::Community || sight.access->kind == AccessLine::Kind::User);
}

// Settings of which a section has one line.
bool IsSectionSetting(std::string_view keyword) {
  constexpr std::string_view kOthers[] = {"sysservices",   "sysobjectid", "agentxsocket", "agentxtimeout",
                                          "agentxretries", "master",      "rocommunity",  "rwcommunity"};
  return IsSystemText(keyword) || std::find(std::begin(kOthers), std::end(kOthers), keyword) != std::end(kOthers);
}

// Directives of which the rules look at more than the name.
bool IsJudged(std::string_view keyword) {
  constexpr std::string_view kOthers[] = {"trapsink",        "trap2sink",  "informsink", "trapsess",
                                          "includealldisks", "createuser", "sysdescr",   "engineidtype"};
  return IsSectionSetting(keyword) || IsAccess(keyword) || IsPlainValue(keyword) || IsInclude(keyword) ||
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
  const bool leadsToUnread = IsInclude(setting.keyword) && (sight.included == nullptr || !sight.included->problem.empty());
  history.hasUnread = history.hasUnread || leadsToUnread;
  history.hasAccess = history.hasAccess || LetsIn(sight);
  if (setting.keyword == "createuser" || (sight.access && sight.access->problem.empty())) {
    history.users.Add(setting, line.number);
  }
  if (sight.access) {
    history.names.Add(*sight.access, line.number);
  }
  if (line.IsInside() && line.section == sight.layout.firstStart && IsSectionSetting(setting.keyword)) {
    History::Value& value = history.section[setting.keyword];
    value = {value.first == 0 ? line.number : value.first, line.number, setting.rest};
  }
  if (setting.keyword == "includealldisks" && history.disksLine == 0 && !IsRejected(setting)) {
    history.disksLine = line.number;
    history.diskPercent = DiskPercent(setting.rest);
  }
  if (!sight.grantKey.empty() && history.communities.size() < kMostRemembered) {
    history.communities.emplace(sight.grantKey, ReadGrant(line));
  }
  if (sight.sink && !sight.sink->words.empty() && history.sinks.size() < kMostRemembered) {
    history.sinks.emplace(SinkKey(*sight.sink), line.number);
  }
}

// Walks through a text, and through those that it includes, in the order in which the daemon reads them.
class Judge {
 public:
  Judge(std::string_view text, Report& report, const Circumstances& circumstances, DaemonText* daemon)
      : m_text(text), m_report(report), m_circumstances(circumstances), m_layout(LayOut(text)), m_daemon(daemon) {}

  Unjudged Run() {
    m_lines = CountOfLines(m_text);
    // Cut into lines at bytes, a text in UTF-16 makes no sense.
    ForEachLine(m_layout.isUtf16 ? std::string_view() : m_text,
                [this](const ConfigLine& line) { JudgeAndFollow(line, m_circumstances.path, 0); });
    return m_unjudged;
  }

 private:
  static std::size_t CountOfLines(std::string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  }

  void JudgeFile(const IncludedFiles::File& file, std::size_t anchor, int depth) {
    const std::size_t whole = ++m_lines;
    m_lines += CountOfLines(file.text);
    m_report.AddFile(whole, file.path);
    JudgeMode(file.mode, m_report, whole);
    const bool isUtf16 = IsUtf16(file.text);
    ForEachLine(isUtf16 ? std::string_view() : std::string_view(file.text), [&](const ConfigLine& own) {
      ConfigLine line = own;
      line.number += whole;
      line.anchor = anchor;
      line.isIncluded = true;
      line.place = Place::Outside;
      line.section = 0;
      if (own.number != 0) {
        JudgeAndFollow(line, file.path, depth);
      } else if (isUtf16) {
        JudgeLine(line, nullptr, true);
      }
    });
  }

  void JudgeAndFollow(const ConfigLine& line, const std::string& path, int depth) {
    if (path.empty() || FindInclude(line) == nullptr) {
      JudgeLine(line, nullptr, line.number == 0 && m_layout.isUtf16);
      return;
    }
    const Includes::Found found = m_includes.Follow(line, path, depth);
    JudgeLine(line, &found, false);
    for (const IncludedFiles::File& file : found.files) {
      JudgeFile(file, line.anchor, depth + 1);
    }
  }

  void JudgeLine(const ConfigLine& line, const Includes::Found* included, bool isUtf16) {
    const ReadBack read = line.IsInside() ? ReadLineBack(line.text) : ReadBack();
    const std::string grantKey = line.setting ? GrantKey(*line.setting) : "";
    const std::optional<Sink> sink = line.setting ? ReadSink(*line.setting) : std::nullopt;
    const std::optional<AccessLine> access = line.setting ? ReadAccess(*line.setting) : std::nullopt;
    const std::optional<TrapSession> session = line.setting ? ReadTrapSession(*line.setting) : std::nullopt;
    const Sight sight{line, read, m_layout, m_history, grantKey, sink, session, access, m_circumstances, included, isUtf16};
    for (const Rule& rule : Rules()) {
      m_report.Begin(rule.name, rule.severity, line.number);
      rule.judge(sight, m_report);
    }
    Remember(sight, m_history);
    PassOn(line);
  }

  void PassOn(const ConfigLine& line) {
    const bool isKnown = line.setting && m_circumstances.Directives().daemon.count(line.setting->keyword) != 0;
    if (isKnown && !IsJudged(line.setting->keyword)) {
      ++(DaemonText::Takes(*line.setting) ? m_unjudged.forDaemon : m_unjudged.others);
    }
    if (m_daemon != nullptr && line.number != 0) {
      m_daemon->Add(line);
    }
  }

  std::string_view m_text;
  Report& m_report;
  const Circumstances& m_circumstances;
  const Layout m_layout;
  Includes m_includes;
  History m_history;
  DaemonText* const m_daemon;
  Unjudged m_unjudged;
  std::size_t m_lines = 0;  // numbers that are given
};

}  // namespace

const std::vector<Rule>& Rules() {
  static const std::vector<Rule> rules = [] {
    std::vector<Rule> all;
    for (const auto& some : {MarkerRules(), ReaderRules(), CommunityRules(), AccessRules(), TrapRules(), ValueRules(),
                             EncodingRules(), DirectiveRules(), IncludeRules()}) {
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
  names.insert(names.end(), {kFileModeRule, kLineFeedRule, kElementIgnoredRule, kSwitchRule, kDeviceIdRule,
                             kSettingMissingRule, kDaemonRule, kLostRule, kRotationOpenRule});
  return names;
}

Unjudged JudgeText(std::string_view text, Report& report, const Circumstances& circumstances, DaemonText* daemon) {
  return Judge(text, report, circumstances, daemon).Run();
}

}  // namespace devhost

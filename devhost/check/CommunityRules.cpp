#include <algorithm>

#include "devhost/check/Rules.h"

// Who has access to the daemon, and by which community.
namespace devhost {

namespace {

// The daemon's buffer; what is longer is cut.
constexpr std::size_t kLongestCommunity = 255;

// A line with a community that the daemon takes.
bool IsJudged(const Sight& sight) {
  return IsCommunityKeyword(sight.Keyword()) && !sight.line.setting->words.empty() &&
         !sight.line.setting->words.front().text.empty();
}

// A community that the agent writes ends with its line. In other lines, a source and a limit may follow.
bool HasMoreWords(const Directive& setting) {
  return setting.words.front().end != setting.restBegin + setting.rest.size();
}

// The community that the author of the line meant: inside a section everything but the quotes that the agent adds.
std::string MeantCommunity(const ConfigLine& line) {
  const Directive& setting = *line.setting;
  const std::string& rest = setting.rest;
  if (line.IsInside()) {
    const bool quoted = rest.size() > 2 && rest.front() == '"' && rest.back() == '"' && Contains(rest, " ");
    return quoted ? rest.substr(1, rest.size() - 2) : rest;
  }
  const DirectiveWord& word = setting.words.front();
  const std::string_view whole = std::string_view(line.text).substr(word.begin, word.end - word.begin);
  if (word.quote == '\0') {
    return std::string(whole);
  }
  const bool closed = whole.size() > 1 && whole.back() == word.quote;
  return std::string(whole.substr(1, whole.size() - (closed ? 2 : 1)));
}

// The earlier line that the daemon uses instead of this one, or null.
const Grant* Earlier(const Sight& sight) {
  const auto found = sight.above.communities.find(sight.grantKey);
  if (found == sight.above.communities.end()) {
    return nullptr;
  }
  const Grant& earlier = found->second;
  return earlier.source.empty() || earlier.source == ReadGrant(sight.line).source ? &earlier : nullptr;
}

void JudgeCommunityInPairs(const Sight& sight, Report& report) {
  const bool isCommunity = IsCommunityKeyword(sight.Keyword()) && !sight.line.setting->words.empty();
  if (isCommunity && sight.line.setting->words.front().text.empty()) {
    report.Add("the daemon takes two quotes in a row for an empty community and rejects the line: it gives access to nobody",
               "give the community without quotes; the agent adds them where there is a space");
  }
}

void JudgeCommunityMisread(const Sight& sight, Report& report) {
  if (!IsJudged(sight) || (sight.line.IsInside() && HasMoreWords(*sight.line.setting))) {
    return;
  }
  const std::string meant = MeantCommunity(sight.line).substr(0, kLongestCommunity);
  const std::string answered = sight.grantKey.substr(2);
  if (answered != meant) {
    report.Add("a quote or a backslash in the community: the daemon answers to " + report.Secret(answered) + " instead of " +
                   report.Secret(meant),
               "choose a community without \", ' and \\");
  }
}

void JudgeCommunityWords(const Sight& sight, Report& report) {
  if (!IsJudged(sight) || !sight.line.IsInside() || !HasMoreWords(*sight.line.setting)) {
    return;
  }
  report.Add("the agent takes everything after " + std::string(sight.Keyword()) +
                 " as the community; the daemon takes only the first word, and the next one as the address that may use it",
             "choose a community without tabs and quotes, and put limits on it in a line of your own below the section");
}

void JudgeCommunityLength(const Sight& sight, Report& report) {
  if (IsJudged(sight) && sight.line.setting->words.front().text.size() > kLongestCommunity) {
    report.Add("the community is longer than 255 bytes: the daemon cuts it and answers to its beginning",
               "choose a community of at most 255 bytes");
  }
}

void JudgeWriteLikeRead(const Sight& sight, Report& report) {
  if (!IsJudged(sight)) {
    return;
  }
  const Grant* const earlier = Earlier(sight);
  if (earlier != nullptr && !earlier->writes && ReadGrant(sight.line).writes) {
    report.Add("the write community is also the read community of " + report.LineName(earlier->line) +
                   ": the daemon uses the first line, so nobody can write with it",
               "choose another write community");
  }
}

void JudgeFirstGrantWins(const Sight& sight, Report& report) {
  if (!IsJudged(sight)) {
    return;
  }
  const Grant* const earlier = Earlier(sight);
  const Grant grant = ReadGrant(sight.line);
  if (earlier == nullptr || (!earlier->writes && grant.writes)) {
    return;
  }
  if (earlier->writes != grant.writes || earlier->source != grant.source || earlier->limit != grant.limit) {
    report.Add("the same community as in " + report.LineName(earlier->line) +
                   ": the daemon uses the first line, so what this one restricts or adds has no effect",
               "choose another community, or remove one of the two lines");
  }
}

void JudgeNoAccess(const Sight& sight, Report& report) {
  const History& above = sight.above;
  const bool isOpen = above.hasAccess || above.hasUnread || above.names.LetSomebodyIn();
  if (sight.line.number == 0 && !isOpen && !sight.circumstances.isOff) {
    report.Add("nobody has access: the daemon runs and answers nobody", "set a read community");
  }
}

// Who may use a community, and the community, wherever the line has them; nothing for lines without one.
struct Door {
  std::string source;
  std::string community;
};

Door ReadDoor(const Sight& sight) {
  const std::vector<DirectiveWord>& words = sight.line.setting->words;
  const std::string_view keyword = sight.Keyword();
  const auto word = [&words](std::size_t at) { return at < words.size() ? words[at].text : std::string(); };
  if (!sight.grantKey.empty()) {
    return {ReadGrant(sight.line).source, sight.grantKey.substr(2)};
  }
  if (keyword == "authcommunity") {
    return {word(2), word(1)};
  }
  if (keyword == "com2sec" || keyword == "com2sec6") {
    const std::size_t first = word(0) == "-Cn" ? 2 : 0;
    return {word(first + 1), word(first + 2)};
  }
  return {};
}

void JudgeWellKnown(const Sight& sight, Report& report) {
  if (!sight.line.setting) {
    return;
  }
  const Door door = ReadDoor(sight);
  const bool isHere = door.source == "localhost" || door.source == "::1" || door.source.compare(0, 4, "127.") == 0;
  if ((door.community == "public" || door.community == "private") && !isHere) {
    report.Add("a community that everybody tries first, public or private: the daemon answers whoever asks",
               "choose a community that nobody can guess");
  }
}

// The line that lets somebody in; those that only prepare it are not enough.
bool OpensDoor(const Sight& sight) {
  using Kind = AccessLine::Kind;
  const std::optional<AccessLine>& access = sight.access;
  return access && access->problem.empty() &&
         (access->kind == Kind::Community || access->kind == Kind::User || access->kind == Kind::Rights);
}

void JudgeStillOpen(const Sight& sight, Report& report) {
  if (!sight.circumstances.isOff || !OpensDoor(sight) || IsRejected(*sight.line.setting)) {
    return;
  }
  const bool isAgents = sight.line.IsInside() && sight.layout.IsReplaced() && !sight.IsKept();
  report.Add(
      "SNMP is switched off on the device, but the daemon does not know that: this line still lets somebody in",
      isAgents ? "erase the communities of the device, too, or stop the daemon" : "remove this line, or stop the daemon");
}

}  // namespace

bool IsCommunityKeyword(std::string_view keyword) {
  return keyword == "rocommunity" || keyword == "rwcommunity" || keyword == "rocommunity6" || keyword == "rwcommunity6";
}

std::string AnsweredCommunity(const Directive& setting) {
  const std::string once = setting.words.front().text.substr(0, kLongestCommunity);
  const auto again = ReadDirective("com2sec '" + once + "'");
  return again && !again->words.empty() ? again->words.front().text : std::string();
}

Grant ReadGrant(const ConfigLine& line) {
  const Directive& setting = *line.setting;
  Grant grant;
  grant.line = line.number;
  grant.writes = setting.keyword.front() == 'r' && setting.keyword[1] == 'w';
  for (std::size_t at = 1; at < setting.words.size(); ++at) {
    const std::string& word = setting.words[at].text;
    if (at == 1) {
      grant.source = word == "default" ? "" : word;
    } else {
      grant.limit += (grant.limit.empty() ? "" : " ") + word;
    }
  }
  return grant;
}

std::string GrantKey(const Directive& setting) {
  if (!IsCommunityKeyword(setting.keyword) || setting.words.empty()) {
    return "";
  }
  return (setting.keyword.back() == '6' ? "6 " : "4 ") + AnsweredCommunity(setting);
}

std::vector<Rule> CommunityRules() {
  using S = Severity;
  return {
      {"community-in-pairs-of-quotes", S::Error, JudgeCommunityInPairs},
      {"community-misread", S::Error, JudgeCommunityMisread},
      {"community-of-several-words", S::Error, JudgeCommunityWords},
      {"community-too-long", S::Error, JudgeCommunityLength},
      {"write-community-like-read", S::Error, JudgeWriteLikeRead},
      {"first-community-wins", S::Error, JudgeFirstGrantWins},
      {"no-access", S::Warning, JudgeNoAccess},
      {"well-known-community", S::Warning, JudgeWellKnown},
      {"still-lets-in", S::Warning, JudgeStillOpen},
  };
}

}  // namespace devhost

#ifndef DEVHOST_CHECK_RULES_H
#define DEVHOST_CHECK_RULES_H

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "devhost/check/ConfigText.h"
#include "devhost/check/ReadBack.h"
#include "devhost/check/Report.h"

// The rules that an snmpd.conf is judged by. docs/check-rules.md tells what each of them is about.
namespace devhost {

// A line that lets somebody in by a community.
struct Grant {
  std::size_t line = 0;
  bool writes = false;
  std::string source;  // who may use it; "" for everybody
  std::string limit;   // what it shows, "" for everything
};

// A line that says where traps go. The daemon cuts it at blanks alone.
struct Sink {
  std::vector<std::string> words;  // host, community, port
  std::string host;                // without transport and port
  std::string ownPort;             // the port in the target, "" when there is none
  bool isBareAddress = false;      // an IPv6 address without brackets
};

// What the lines above the one under judgement have told. Lines beyond the limits of memory are not compared.
struct History {
  struct Value {
    std::size_t first = 0;  // the first line of that keyword
    std::size_t line = 0;   // the last one
    std::string text;       // its value
  };
  std::map<std::string, Value, std::less<>> section;   // by keyword: what the first section says
  std::unordered_map<std::string, Grant> communities;  // by family and the text that the daemon answers to: the first line
  std::unordered_map<std::string, std::size_t> sinks;  // by host and port: the first line
  std::size_t firstText = 0;                           // the first line that is not blank
  bool hasAccess = false;                              // somebody is let in, or another file may do it
  bool hasNul = false;
};

// One line among all of them.
struct Sight {
  const ConfigLine& line;
  const ReadBack& read;  // what the agent's reader makes of it; nothing outside a section
  const Layout& layout;
  const History& above;
  // Of a line about a community: what makes it the same as another, see GrantKey; else "".
  const std::string& grantKey;
  // Of a line that sends traps: its parts, when the daemon takes it for such a line; else none.
  const std::optional<Sink>& sink;

  // The daemon's keyword in lower case, "" for a comment.
  std::string_view Keyword() const { return line.setting ? std::string_view(line.setting->keyword) : std::string_view(); }
  // The next write leaves the line in place.
  bool IsKept() const { return line.number >= layout.firstKept; }
};

struct Rule {
  const char* name;
  Severity severity;
  void (*judge)(const Sight& sight, Report& report);
};

// All rules about lines, in the order of the page.
const std::vector<Rule>& Rules();

// The names of all rules, those about files, settings and the daemon's parser too.
std::vector<std::string> RuleNames();
inline constexpr char kFileModeRule[] = "file-mode";
inline constexpr char kLineFeedRule[] = "line-feed";
inline constexpr char kDaemonRule[] = "daemon";  // whatever the daemon's parser complains of

// Judges a whole text.
void JudgeText(std::string_view text, Report& report);

// Adds what the line tells to the history. `JudgeText` does it; it stands here for those who walk on their own.
void Remember(const Sight& sight, History& history);

// About communities (CommunityRules.cpp).
bool IsCommunityKeyword(std::string_view keyword);
// The text that the daemon answers to: it cuts the word twice, first out of the file, then out of a line of its own.
std::string AnsweredCommunity(const Directive& setting);
Grant ReadGrant(const ConfigLine& line);
// Two characters for the family of addresses, then the text that the daemon answers to; "" for other lines.
std::string GrantKey(const Directive& setting);
void JudgeCommunityInPairs(const Sight& sight, Report& report);
void JudgeCommunityMisread(const Sight& sight, Report& report);
void JudgeCommunityWords(const Sight& sight, Report& report);
void JudgeCommunityLength(const Sight& sight, Report& report);
void JudgeWriteLikeRead(const Sight& sight, Report& report);
void JudgeFirstGrantWins(const Sight& sight, Report& report);
void JudgeNoAccess(const Sight& sight, Report& report);

// About trap sinks (TrapRules.cpp).
std::optional<Sink> ReadSink(const Directive& setting);
// The host and the port that traps go to.
std::string SinkKey(const Sink& sink);
void JudgeTrapTarget(const Sight& sight, Report& report);
void JudgeTrapPortAsCommunity(const Sight& sight, Report& report);
void JudgeTrapQuotes(const Sight& sight, Report& report);
void JudgeTrapPort(const Sight& sight, Report& report);
void JudgeTrapPortTwice(const Sight& sight, Report& report);
void JudgeTrapBareAddress(const Sight& sight, Report& report);
void JudgeTrapCommunityLength(const Sight& sight, Report& report);
void JudgeSinkTwice(const Sight& sight, Report& report);

// About other values (ValueRules.cpp).
bool IsSystemText(std::string_view keyword);
// A line that the daemon complains of and passes over, as far as these rules know.
bool IsRejected(const Directive& setting);
void JudgeNul(const Sight& sight, Report& report);
void JudgeHash(const Sight& sight, Report& report);
void JudgeMissingValue(const Sight& sight, Report& report);
void JudgeTextLength(const Sight& sight, Report& report);
void JudgeAgentXTimeout(const Sight& sight, Report& report);
void JudgeFileMode(unsigned mode, Report& report);

// About markers and what the next write does with the file (MarkerRules.cpp).
void JudgeStartWithoutEnd(const Sight& sight, Report& report);
void JudgeEndWithoutStart(const Sight& sight, Report& report);
void JudgeMarkersReversed(const Sight& sight, Report& report);
void JudgeStartAgain(const Sight& sight, Report& report);
void JudgeEndAgain(const Sight& sight, Report& report);
void JudgeMarkerInText(const Sight& sight, Report& report);
void JudgeTextAbove(const Sight& sight, Report& report);
void JudgeLineAfterTrailer(const Sight& sight, Report& report);
void JudgeForeignLineInside(const Sight& sight, Report& report);
void JudgeRetries(const Sight& sight, Report& report);
void JudgeOldCommunity(const Sight& sight, Report& report);
void JudgeOverride(const Sight& sight, Report& report);
void JudgeFutureOverride(const Sight& sight, Report& report);

// About what the agent's reader takes (ReaderRules.cpp).
void JudgeCommentRead(const Sight& sight, Report& report);
void JudgeKeywordInValue(const Sight& sight, Report& report);
void JudgeKeywordLost(const Sight& sight, Report& report);
void JudgeBlanks(const Sight& sight, Report& report);
void JudgeCarriageReturn(const Sight& sight, Report& report);
void JudgeSettingTwice(const Sight& sight, Report& report);
void JudgeQuotesAgain(const Sight& sight, Report& report);
void JudgeTrapReadBack(const Sight& sight, Report& report);

}  // namespace devhost

#endif

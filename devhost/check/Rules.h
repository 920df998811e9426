#ifndef DEVHOST_CHECK_RULES_H
#define DEVHOST_CHECK_RULES_H

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "devhost/check/AccessLine.h"
#include "devhost/check/AccessNames.h"
#include "devhost/check/ConfigText.h"
#include "devhost/check/DaemonText.h"
#include "devhost/check/Includes.h"
#include "devhost/check/ReadBack.h"
#include "devhost/check/Report.h"
#include "devhost/check/TrapSession.h"
#include "devhost/check/UserNames.h"
#include "devhost/snmpd/DirectiveNames.h"

// The rules that an snmpd.conf is judged by. docs/check-rules.md describes each of them.
namespace devhost {

// A line that lets somebody in by a community.
struct Grant {
  std::size_t line = 0;
  bool writes = false;
  std::string source;  // who may use it; "" for everybody
  std::string limit;   // what may be seen, "" for everything
};

// A line that says where traps go. The daemon cuts it at blanks alone.
struct Sink {
  std::vector<std::string> words;  // host, community, port; none when there are only options in front of them
  bool hasUnknownOption = false;   // one that the daemon skips
  std::string host;                // without transport and port
  std::string ownPort;             // the port in the target, "" when there is none
  bool isBareAddress = false;      // an IPv6 address without brackets
};

// What is known from the lines above the current one. Beyond a limit, which bounds the memory, lines are not remembered.
struct History {
  struct Value {
    std::size_t first = 0;  // the first line of that keyword
    std::size_t line = 0;   // the last one
    std::string text;       // its value
  };
  std::map<std::string, Value, std::less<>> section;   // by keyword: what the first section says
  std::unordered_map<std::string, Grant> communities;  // by family and the text that the daemon answers to: the first line
  std::unordered_map<std::string, std::size_t> sinks;  // by host and port: the first line
  // The first line with includeAllDisks that the daemon takes, and its limit.
  std::size_t disksLine = 0;
  long diskPercent = 0;
  std::size_t firstText = 0;  // the first line that is not blank
  AccessNames names;          // which views, groups and security names there are
  UserNames users;            // which users lines make, and let in
  bool hasAccess = false;     // a community or a user has access by a line of its own
  bool hasUnread = false;     // a file that is not known may say more
  bool hasNul = false;
};

// What is known about the file from elsewhere.
struct Circumstances {
  bool isOff = false;                          // SNMP is switched off on the device
  const DirectiveNames* directives = nullptr;  // those of the installed daemon; null for the usual ones
  std::string path;                            // where the text is, absolute: then included files are judged, too; or ""

  const DirectiveNames& Directives() const { return directives != nullptr ? *directives : UsualDirectiveNames(); }
};

// One line, with what the rules need to know of the others.
struct Sight {
  const ConfigLine& line;
  const ReadBack& read;  // what the agent's reader makes of it; nothing outside a section
  const Layout& layout;
  const History& above;
  // Of a line about a community: what makes it the same as another, see GrantKey; else "".
  const std::string& grantKey;
  // Of a line that sends traps: its parts, when the daemon takes it for such a line; else none.
  const std::optional<Sink>& sink;
  // Of a line with trapsess: its parts; else none.
  const std::optional<TrapSession>& session;
  // Of a line about access: its parts; else none.
  const std::optional<AccessLine>& access;
  const Circumstances& circumstances;
  const Includes::Found* included = nullptr;  // of a line that includes files: what it leads to; null when that is not known
  bool isUtf16 = false;                       // the whole text of the file

  // The daemon's keyword in lower case, "" for a comment.
  std::string_view Keyword() const { return line.setting ? std::string_view(line.setting->keyword) : std::string_view(); }
  // The next write leaves the line in place.
  bool IsKept() const { return line.anchor >= layout.firstKept; }
};

// One rule: its name in the output and on the page, how bad its findings are, and the function that looks at one line.
struct Rule {
  const char* name;
  Severity severity;
  void (*judge)(const Sight& sight, Report& report);
};

// The rules about lines, by their subject. Each function stands in the file of its name, with its rules.
std::vector<Rule> MarkerRules();
std::vector<Rule> ReaderRules();
std::vector<Rule> CommunityRules();
std::vector<Rule> AccessRules();
std::vector<Rule> TrapRules();
std::vector<Rule> ValueRules();
std::vector<Rule> EncodingRules();
std::vector<Rule> DirectiveRules();
std::vector<Rule> IncludeRules();

// All of them, in the order of the page.
const std::vector<Rule>& Rules();

// The names of all rules, those about files, settings and the daemon's parser included.
std::vector<std::string> RuleNames();
inline constexpr char kFileModeRule[] = "file-mode";
inline constexpr char kLineFeedRule[] = "line-feed";
inline constexpr char kElementIgnoredRule[] = "element-ignored";  // these four are about settings
inline constexpr char kDeviceIdRule[] = "device-id";
inline constexpr char kSwitchRule[] = "switch-misread";
inline constexpr char kSettingMissingRule[] = "setting-missing";
inline constexpr char kLostRule[] = "line-lost";              // what a preview finds beside the rules
inline constexpr char kRotationOpenRule[] = "rotation-open";  // what the plan of a change finds beside them
inline constexpr char kNotDefinedRule[] = "name-not-defined";
inline constexpr char kNoRightsRule[] = "no-rights";
inline constexpr char kUserRule[] = "user-mismatch";
inline constexpr char kDaemonRule[] = "daemon";  // whatever the daemon's parser complains of

// Looks at who may read and change a file. `line` is the line for what concerns the whole file.
void JudgeMode(unsigned mode, Report& report, std::size_t line = 0);

// The directives of a file that no rule knows more of than the name.
struct Unjudged {
  std::size_t forDaemon = 0;  // those that the daemon's own parser can judge
  std::size_t others = 0;     // those that the daemon does not get: it would do what they say
};

// Applies each rule to each line of the text, and of the files that it includes, and adds what they find to the report. What
// the daemon's parser may read of them is added to `daemon`, unless that is null.
Unjudged JudgeText(std::string_view text, Report& report, const Circumstances& circumstances = {},
                   DaemonText* daemon = nullptr);

// Whether a line with this keyword, in lower case, lets somebody in by a community.
bool IsCommunityKeyword(std::string_view keyword);
// The text that the daemon answers to: it cuts the word twice, first out of the file, then out of a line of its own.
std::string AnsweredCommunity(const Directive& setting);
// The line must be about a community and hold one.
Grant ReadGrant(const ConfigLine& line);
// Two characters for the family of addresses, then the text that the daemon answers to; "" for other lines.
std::string GrantKey(const Directive& setting);

// The parts of a line that sends traps; nothing for other lines.
std::optional<Sink> ReadSink(const Directive& setting);
// The host and the port that traps go to.
std::string SinkKey(const Sink& sink);

// Whether the keyword, in lower case, is that of the contact, the location or the name.
bool IsSystemText(std::string_view keyword);
// Whether the daemon takes nothing for this keyword, in lower case, but a number or one of few words.
bool IsPlainValue(std::string_view keyword);
// The free space in percent that the daemon takes from the value of includeAllDisks.
long DiskPercent(const std::string& value);
// Whether the daemon complains of the line and ignores it, as far as these rules know.
bool IsRejected(const Directive& setting);

}  // namespace devhost

#endif

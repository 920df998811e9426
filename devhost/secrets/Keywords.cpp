#include "devhost/secrets/Keywords.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

namespace devhost {

namespace {

// In front of a longer name, one letter says little.
constexpr std::size_t kShortestNear = 5;
constexpr std::size_t kLongestName = 32;

using Table = std::unordered_map<std::string_view, Keyword>;

// Those that "snmpd -H" lists, and those that it knows besides. A directive that is missing here is shown as *****.
const Table& Keywords() {
  static const Table kTable = [] {
    Table table;
    // The names stand between blanks.
    const auto add = [&table](Keyword keyword, std::string_view names) {
      for (std::size_t at = 0; at < names.size();) {
        const std::size_t end = std::min(names.find(' ', at), names.size());
        table.emplace(names.substr(at, end - at), keyword);
        at = end + 1;
      }
    };
    add(Keyword::Harmless,
        "access agentaddress agentgroup agentuser agentxperms agentxretries agentxsocket agentxtimeout authtrapenable "
        "avgbulkvarbindsize count_kthreads defaultmonitors defversion disk diskio diskio_exclude_fd "
        "diskio_exclude_loop diskio_exclude_ram donotretainnotificationlogs dontlogtcpwrappersconnects dontretainlogs "
        "engineidtype file group ignoredisk include includealldisks includedir includefile includesearch interface "
        "interface_fadeout interface_replace_old leave_pidfile linkupdownnotifications load logtimestamp master "
        "maxgetbulkrepeats maxgetbulkresponses pdustatsmax pdustatsthreshold proc quit realstorageunits retries "
        "sendmail_index sendmail_queue_t sendmail_stats_t skipnfsinhostresources storageusenfs swap syscontact "
        "sysdescr syslocation sysname sysobjectid sysservices table timeout view");
    add(Keyword::Hidden,
        "add_row agentsecname alias authaccess authgroup authuser certsecname clientaddr cron debugtokens defcontext "
        "defdomain defsecurityname deftarget disableperl dlmod engineboots engineid engineidnic exec execfix extend "
        "extendfix ifmib_max_num_ifaces include_ifmib_iface_prefix injecthandler iqueryseclevel iquerysecname "
        "iqueryversion logmatch logoption mibdirs mibs monitor notificationevent oldengineid override pass "
        "pass_persist perl perlinitfile persistentdir procfix proxy psyscontact psyslocation psysname repeat rouser "
        "rwuser sendmail_config sendmail_queue sendmail_stats setaccess setevent setserialno sh smuxsocket "
        "snmptlstmaddr snmptlstmparams sourcefilteraddress sourcefiltertype strictdisman trustcert v1trapaddress");
    add(Keyword::Secret,
        "authcommunity com2sec com2sec6 com2secunix createuser defauthlocalizedkey defauthmasterkey defauthpassphrase "
        "defcommunity defpassphrase defprivlocalizedkey defprivmasterkey defprivpassphrase informsink rocommunity "
        "rocommunity6 rwcommunity rwcommunity6 smuxpeer trap2sink trapcommunity trapsess trapsink usmuser");
    return table;
  }();
  return kTable;
}

using Names = std::vector<Table::value_type>;

// The names that may be near to others, each at its length. A near name is at most one letter longer or shorter, and every
// word of every text is looked for.
const std::vector<Names>& NamesByLength() {
  static const std::vector<Names> kNames = [] {
    std::vector<Names> names(kLongestName + 2);
    for (const auto& entry : Keywords()) {
      if (entry.first.size() >= kShortestNear) {
        names.at(entry.first.size()).push_back(entry);
      }
    }
    return names;
  }();
  return kNames;
}

bool IsNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// Whether one step makes one of the other: a letter more, less or another, or two letters swapped.
bool IsNear(std::string_view left, std::string_view right) {
  while (!left.empty() && !right.empty() && left.front() == right.front()) {
    left.remove_prefix(1);
    right.remove_prefix(1);
  }
  while (!left.empty() && !right.empty() && left.back() == right.back()) {
    left.remove_suffix(1);
    right.remove_suffix(1);
  }
  const bool swapped = left.size() == 2 && right.size() == 2 && left[0] == right[1] && left[1] == right[0];
  return swapped || (left.size() <= 1 && right.size() <= 1);
}

}  // namespace

Keyword FindKeyword(std::string_view name, Spelling spelling) {
  if (name.size() > kLongestName) {
    return Keyword::Unknown;
  }
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  const auto exact = Keywords().find(lower);
  if (exact != Keywords().end() || spelling == Spelling::Exact || lower.size() + 1 < kShortestNear) {
    return exact == Keywords().end() ? Keyword::Unknown : exact->second;
  }
  Keyword found = Keyword::Unknown;
  for (std::size_t length = lower.size() - 1; length <= lower.size() + 1; ++length) {
    for (const auto& [known, keyword] : NamesByLength()[length]) {
      if (keyword > found && IsNear(known, lower)) {
        found = keyword;
      }
    }
  }
  return found;
}

std::string_view NameAt(std::string_view text) {
  const auto end = std::find_if_not(text.begin(), text.end(), IsNameCharacter);
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

}  // namespace devhost

#include "devhost/snmpd/DirectiveNames.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "devhost/snmpd/Directive.h"
#include "devhost/snmpd/LineCutter.h"
#include "devhost/snmpd/NearName.h"
#include "devhost/snmpd/WordCutter.h"

namespace devhost {

namespace {

enum class Place {
  Daemon,    // in snmpd.conf
  Unlisted,  // the same, but the option -H lists only those that come with a word of help
  Programs,  // in snmp.conf
  Prose      // not a directive, but what people call a secret
};

struct Group {
  Place place;
  Follows follows;
  const char* names;
};

constexpr Group kGroups[] = {
    {Place::Unlisted, Follows::Harmless, "include includedir includefile includesearch"},
    {Place::Unlisted, Follows::Anything,
     "_mteenottable _mteesettable _mteetable _mteotable _mtetbltable _mtetdtable _mtetextable _mtettable "
     "_mtetthtable _schedtable engineboots enum exactengineid exec exec2 execfix2 extend ifxtable "
     "mteobjectstable mtetriggertable notificationfilter oldengineid pauthtrapenable psyscontact psyslocation "
     "psysname sh sh2 snmpnotifyfilterprofiletable snmpnotifyfiltertable snmpnotifytable targetaddr "
     "targetparams vacmaccess vacmauthaccess vacmgroup vacmview"},
    {Place::Unlisted, Follows::Secret,
     "execfix extend-sh extendfix usersetauthkey usersetauthlocalkey usersetauthpass usersetprivkey "
     "usersetprivlocalkey usersetprivpass usmuser"},
    {Place::Daemon, Follows::Harmless,
     "access agentaddress agentgroup agentuser agentxperms agentxretries agentxsocket agentxtimeout "
     "authtrapenable avgbulkvarbindsize count_kthreads defaultmonitors disk diskio diskio_exclude_fd "
     "diskio_exclude_loop diskio_exclude_ram donotretainnotificationlogs dontlogtcpwrappersconnects "
     "dontretainlogs engineidtype file group ignoredisk includealldisks interface interface_fadeout "
     "interface_replace_old leave_pidfile linkupdownnotifications load master maxgetbulkrepeats "
     "maxgetbulkresponses pdustatsmax pdustatsthreshold proc quit realstorageunits sendmail_index "
     "sendmail_queue_t sendmail_stats_t skipnfsinhostresources storageusenfs swap syscontact sysdescr "
     "syslocation sysname sysobjectid sysservices table view"},
    {Place::Daemon, Follows::Anything,
     "add_row at cron defdomain deftarget disableperl dlmod engineid engineidnic ifmib_max_num_ifaces "
     "include_ifmib_iface_prefix injecthandler iqueryseclevel iqueryversion logmatch monitor notificationevent "
     "override pass perl procfix proxy repeat rouser rwuser sendmail_queue sendmail_stats setaccess setevent "
     "setserialno smuxsocket snmptlstmaddr snmptlstmparams sourcefilteraddress sourcefiltertype strictdisman "
     "v1trapaddress"},
    {Place::Daemon, Follows::Secret,
     "agentsecname authaccess authcommunity authgroup authuser certsecname com2sec com2sec6 com2secunix "
     "createuser informsink iquerysecname pass_persist perlinitfile rocommunity rocommunity6 rwcommunity "
     "rwcommunity6 sendmail_config smuxpeer trap2sink trapcommunity trapsess trapsink"},
    {Place::Programs, Follows::Harmless, "defversion logtimestamp retries timeout"},
    {Place::Programs, Follows::Anything,
     "16bitids alias clientaddr clientaddrusesport clientrecvbuf clientsendbuf commenttoeol debugloglevel "
     "debugtokens defaultport defauthtype defcontext defdomain defprivtype defsecuritylevel defsecuritymodel "
     "deftarget disablesnmpv1 disablesnmpv2c disablesnmpv3 dodebugging dontbreakdownoids dontloadhostconfig "
     "dontprintunits dumppacket escapequotes extendedindex extrax509subdir hexoutputlength localcert logoption "
     "miballowunderline mibdirs mibfile mibreplacewithlatest mibs mibwarninglevel nocontextengineiddiscovery "
     "nodisplayhint nopersistentload nopersistentsave norangecheck notokenwarnings numerictimeticks "
     "oidoutputformat outputprecision peercert persistentdir printhextext printnumericenums printnumericoids "
     "printvalueonly quickprinting reverseencodeber sendmessagemaxsize serverrecvbuf serversendbuf "
     "showmiberrors strictcommentterm suffixprinting tempfilepattern tlsalgorithms trustcert "
     "tsmusetransportprefix x509crlfile"},
    {Place::Programs, Follows::Secret,
     "defauthlocalizedkey defauthmasterkey defauthpassphrase defcommunity defpassphrase defprivlocalizedkey "
     "defprivmasterkey defprivpassphrase defsecurityname"},
    {Place::Prose, Follows::SecretOrText, "communities community passphrase passwd password"}};

// In a longer word that has no blank in it, shorter ones stand by accident.
constexpr std::size_t kShortestPart = 6;

template <class Use>
void ForEachWord(std::string_view words, Use use) {
  for (WordCutter cutter(words); !cutter.AtEnd();) {
    const DirectiveWord word = cutter.Next();
    use(words.substr(word.begin, word.end - word.begin));
  }
}

void AddNames(Place place, DirectiveNames::Names& names) {
  for (const Group& group : kGroups) {
    if (group.place == place) {
      ForEachWord(group.names, [&names](std::string_view name) { names.emplace(name); });
    }
  }
}

struct Entry {
  std::string_view name;
  Follows follows;
  NearName::Letters letters;
};

// All names. Those that hide most come first.
const std::vector<Entry>& Entries() {
  static const std::vector<Entry> kEntries = [] {
    std::vector<Entry> entries;
    for (const Group& group : kGroups) {
      ForEachWord(group.names, [&](std::string_view name) {
        entries.push_back({name, group.follows, NearName::LettersOf(name)});
      });
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& left, const Entry& right) { return left.follows > right.follows; });
    return entries;
  }();
  return kEntries;
}

const std::unordered_map<std::string_view, Follows>& ExactNames() {
  static const std::unordered_map<std::string_view, Follows> kNames = [] {
    std::unordered_map<std::string_view, Follows> names;
    for (const Entry& entry : Entries()) {
      names.emplace(entry.name, entry.follows);
    }
    return names;
  }();
  return kNames;
}

bool IsNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

}  // namespace

DirectiveNames ReadDirectiveNames(std::string_view list) {
  constexpr std::string_view kDaemonHeading = "  In snmpd.conf ";
  constexpr std::string_view kProgramsHeading = "  In snmp.conf ";
  DirectiveNames names;
  DirectiveNames::Names* current = nullptr;
  for (LineCutter lines(list); lines.Next();) {
    const std::string_view line = lines.Line();
    if (line.substr(0, 5) == "  In ") {
      current = line.substr(0, kDaemonHeading.size()) == kDaemonHeading       ? &names.daemon
                : line.substr(0, kProgramsHeading.size()) == kProgramsHeading ? &names.programs
                                                                              : nullptr;
      continue;
    }
    WordCutter cutter(line);
    if (current != nullptr && line.substr(0, 4) == "    " && !cutter.AtEnd()) {
      current->insert(InLowerCase(cutter.Next().text));
    }
  }
  if (!names.daemon.empty()) {
    AddNames(Place::Unlisted, names.daemon);
  }
  return names;
}

const DirectiveNames& UsualDirectiveNames() {
  static const DirectiveNames kNames = [] {
    DirectiveNames names;
    AddNames(Place::Unlisted, names.daemon);
    AddNames(Place::Daemon, names.daemon);
    AddNames(Place::Programs, names.programs);
    return names;
  }();
  return kNames;
}

std::string_view NearestDirectiveName(std::string_view word, const DirectiveNames::Names& names) {
  const auto end = std::find_if_not(word.begin(), word.end(), IsNameCharacter);
  const std::string_view front = word.substr(0, static_cast<std::size_t>(end - word.begin()));
  const auto exact = names.find(front);
  if (exact != names.end()) {
    return *exact;
  }
  const NearName meant(word);
  std::string_view nearest;
  std::size_t least = NearName::kFar;
  for (const std::string& name : names) {
    const std::size_t distance = meant.DistanceTo(name);
    if (distance < least) {
      least = distance;
      nearest = name;
    }
  }
  return nearest;
}

KnownName FindDirectiveName(std::string_view word) {
  const NearName meant(word);
  const auto exact = ExactNames().find(meant.Text());
  if (exact != ExactNames().end()) {
    return {exact->second, KnownName::Spelling::Exact};
  }
  KnownName nearest;
  if (meant.Text().size() < NearName::kShortest && meant.Text().size() == word.size()) {
    return nearest;
  }
  std::size_t least = NearName::kFar;
  // With pointers: checked iterators cost too much for every word of a long text.
  const std::vector<Entry>& entries = Entries();
  for (const Entry* each = entries.data(); each != entries.data() + entries.size(); ++each) {
    const Entry& entry = *each;
    const std::size_t distance = meant.DistanceTo(entry.name, entry.letters);
    if (distance < least) {
      least = distance;
      nearest.follows = entry.follows;
    } else if (nearest.follows == Follows::NotKnown && entry.follows >= Follows::SecretOrText &&
               entry.name.size() >= kShortestPart && meant.Text().size() > entry.name.size() &&
               meant.HasLetters(entry.letters) && meant.Text().find(entry.name) != std::string::npos) {
      nearest.follows = entry.follows;
    }
  }
  // In a letter of another script, nobody sees that it is wrong.
  const bool isPlain = meant.Text().size() == word.size();
  nearest.spelling = least <= 1 && isPlain ? KnownName::Spelling::OneLetterOff : KnownName::Spelling::Near;
  return nearest;
}

}  // namespace devhost

#include "devhost/snmpd/DirectiveNames.h"

#include <algorithm>
#include <vector>

#include "devhost/snmpd/Directive.h"
#include "devhost/snmpd/LineCutter.h"
#include "devhost/snmpd/WordCutter.h"

namespace devhost {

namespace {

// The option -H lists only those that come with a word of help.
constexpr char kUnlisted[] =
    "_mteenottable _mteesettable _mteetable _mteotable _mtetbltable _mtetdtable _mtetextable _mtettable "
    "_mtetthtable _schedtable engineboots enum exactengineid exec exec2 execfix execfix2 extend extend-sh "
    "extendfix ifxtable include includedir includefile includesearch mteobjectstable mtetriggertable "
    "notificationfilter oldengineid pauthtrapenable psyscontact psyslocation psysname sh sh2 "
    "snmpnotifyfilterprofiletable snmpnotifyfiltertable snmpnotifytable targetaddr targetparams usersetauthkey "
    "usersetauthlocalkey usersetauthpass usersetprivkey usersetprivlocalkey usersetprivpass usmuser vacmaccess "
    "vacmauthaccess vacmgroup vacmview";

constexpr char kDaemon[] =
    "access add_row agentaddress agentgroup agentsecname agentuser agentxperms agentxretries agentxsocket "
    "agentxtimeout at authaccess authcommunity authgroup authtrapenable authuser avgbulkvarbindsize certsecname "
    "com2sec com2sec6 com2secunix count_kthreads createuser cron defaultmonitors defdomain deftarget disableperl "
    "disk diskio diskio_exclude_fd diskio_exclude_loop diskio_exclude_ram dlmod donotretainnotificationlogs "
    "dontlogtcpwrappersconnects dontretainlogs engineid engineidnic engineidtype file group ifmib_max_num_ifaces "
    "ignoredisk include_ifmib_iface_prefix includealldisks informsink injecthandler interface interface_fadeout "
    "interface_replace_old iqueryseclevel iquerysecname iqueryversion leave_pidfile linkupdownnotifications load "
    "logmatch master maxgetbulkrepeats maxgetbulkresponses monitor notificationevent override pass pass_persist "
    "pdustatsmax pdustatsthreshold perl perlinitfile proc procfix proxy quit realstorageunits repeat rocommunity "
    "rocommunity6 rouser rwcommunity rwcommunity6 rwuser sendmail_config sendmail_index sendmail_queue "
    "sendmail_queue_t sendmail_stats sendmail_stats_t setaccess setevent setserialno skipnfsinhostresources "
    "smuxpeer smuxsocket snmptlstmaddr snmptlstmparams sourcefilteraddress sourcefiltertype storageusenfs "
    "strictdisman swap syscontact sysdescr syslocation sysname sysobjectid sysservices table trap2sink "
    "trapcommunity trapsess trapsink v1trapaddress view";

constexpr char kPrograms[] =
    "16bitids alias clientaddr clientaddrusesport clientrecvbuf clientsendbuf commenttoeol debugloglevel "
    "debugtokens defaultport defauthlocalizedkey defauthmasterkey defauthpassphrase defauthtype defcommunity "
    "defcontext defdomain defpassphrase defprivlocalizedkey defprivmasterkey defprivpassphrase defprivtype "
    "defsecuritylevel defsecuritymodel defsecurityname deftarget defversion disablesnmpv1 disablesnmpv2c "
    "disablesnmpv3 dodebugging dontbreakdownoids dontloadhostconfig dontprintunits dumppacket escapequotes "
    "extendedindex extrax509subdir hexoutputlength localcert logoption logtimestamp miballowunderline mibdirs "
    "mibfile mibreplacewithlatest mibs mibwarninglevel nocontextengineiddiscovery nodisplayhint nopersistentload "
    "nopersistentsave norangecheck notokenwarnings numerictimeticks oidoutputformat outputprecision peercert "
    "persistentdir printhextext printnumericenums printnumericoids printvalueonly quickprinting retries "
    "reverseencodeber sendmessagemaxsize serverrecvbuf serversendbuf showmiberrors strictcommentterm "
    "suffixprinting tempfilepattern timeout tlsalgorithms trustcert tsmusetransportprefix x509crlfile";

void AddWords(std::string_view words, DirectiveNames::Names& names) {
  for (WordCutter cutter(words); !cutter.AtEnd();) {
    names.insert(cutter.Next().text);
  }
}

bool IsNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

// How many letters have to be changed, added, removed or swapped with the next one to make one word of the other.
std::size_t Distance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> before(right.size() + 1);
  std::vector<std::size_t> last(right.size() + 1);
  std::vector<std::size_t> row(right.size() + 1);
  for (std::size_t at = 0; at <= right.size(); ++at) {
    last[at] = at;
  }
  for (std::size_t i = 1; i <= left.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const bool same = left[i - 1] == right[j - 1];
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before.swap(last);
    last.swap(row);
  }
  return last[right.size()];
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
    AddWords(kUnlisted, names.daemon);
  }
  return names;
}

const DirectiveNames& UsualDirectiveNames() {
  static const DirectiveNames kNames = [] {
    DirectiveNames names;
    AddWords(kUnlisted, names.daemon);
    AddWords(kDaemon, names.daemon);
    AddWords(kPrograms, names.programs);
    return names;
  }();
  return kNames;
}

std::string_view NearestDirectiveName(std::string_view word, const DirectiveNames::Names& names) {
  constexpr std::size_t kLongest = 40;
  constexpr std::size_t kShortName = 5;  // of such a name, every other word is a few letters away
  const auto end = std::find_if_not(word.begin(), word.end(), IsNameCharacter);
  const std::string_view front = word.substr(0, static_cast<std::size_t>(end - word.begin()));
  const auto exact = names.find(front);
  if (exact != names.end()) {
    return *exact;
  }
  // What is not part of a name may stand for a letter.
  word = word.size() > kLongest ? front : word;
  std::string_view nearest;
  std::size_t least = 3;
  for (const std::string& name : names) {
    const std::size_t most = std::min<std::size_t>(least - 1, name.size() <= kShortName ? 1 : 2);
    const std::size_t longer = std::max(name.size(), word.size());
    if (most != 0 && word.size() <= kLongest && longer - std::min(name.size(), word.size()) <= most) {
      const std::size_t distance = Distance(word, name);
      if (distance <= most) {
        least = distance;
        nearest = name;
      }
    }
  }
  return nearest;
}

}  // namespace devhost

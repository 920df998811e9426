#include "devhost/snmpd/PassiveDirectives.h"

#include <set>

namespace devhost {

bool IsPassiveDirective(std::string_view keyword) {
  static const std::set<std::string_view> kPassive = {
      // The system and who may ask for what.
      "sysdescr", "syslocation", "syscontact", "sysname", "sysservices", "sysobjectid", "rocommunity", "rwcommunity",
      "rocommunity6", "rwcommunity6", "rouser", "rwuser", "createuser", "com2sec", "com2sec6", "group", "access",
      "setaccess", "view", "authcommunity", "authuser", "authgroup", "authaccess", "engineid", "sourcefiltertype",
      "sourcefilteraddress",
      // Traps.
      "authtrapenable", "trapcommunity", "v1trapaddress", "agentsecname", "iquerysecname", "iqueryversion", "iqueryseclevel",
      "monitor", "defaultmonitors", "linkupdownnotifications", "notificationevent", "setevent", "strictdisman", "repeat",
      "cron", "at",
      // Subagents.
      "agentxtimeout", "agentxretries",
      // What is shown of the machine.
      "disk", "includealldisks", "load", "swap", "proc", "diskio", "diskio_exclude_fd", "diskio_exclude_loop",
      "diskio_exclude_ram", "ignoredisk", "skipnfsinhostresources", "realstorageunits", "storageusenfs", "count_kthreads",
      "interface", "ifmib_max_num_ifaces", "include_ifmib_iface_prefix", "interface_fadeout", "interface_replace_old",
      "override",
      // Bounds.
      "maxgetbulkrepeats", "maxgetbulkresponses", "avgbulkvarbindsize", "pdustatsmax", "pdustatsthreshold",
      "dontlogtcpwrappersconnects", "dontretainlogs", "donotretainnotificationlogs"};
  return kPassive.count(keyword) != 0;
}

}  // namespace devhost

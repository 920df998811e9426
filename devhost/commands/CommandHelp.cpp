#include "devhost/commands/CommandHelp.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "devhost/script/ScriptActions.h"

namespace devhost {

namespace {

constexpr char kRunFooter[] =
    "SUBJECT is one of: reply, notification, log (the last one each), setting DRIVER NAME,\n"
    "file DRIVER, flag DEVICE ID, state DRIVER. DRIVER is the name or id of a driver in the\n"
    "project. Words are quoted as in a shell, # starts a comment, PARAM=@FILE takes the text\n"
    "of a file, which may be a pipe as the script may.\n"
    "\n"
    "The whole project and script are checked before the first driver is loaded. Then\n"
    "everything that happens is printed in order, one line each; the first word tells what\n"
    "it is: load, unload, command, reply, notification, event, log, invalidate, manners,\n"
    "file, settings, counts, variable, user-variable, flag, state, daemon, run,\n"
    "output, print, restart, error, expect. Communities and passphrases are shown as *****.\n"
    "\n"
    "Exit status: 0 all went well; 1 an action or expectation failed, a driver could not\n"
    "start or broke the host's rules, or a driver's state or the output could not be read\n"
    "or written; 2 wrong usage, or a project, script, module or state folder that is wrong\n"
    "(nothing of the script was played).\n"
    "\n"
    "Example: see whether a device takes a new name.\n"
    "\n"
    "  $ cat project.xml\n"
    "  <project>\n"
    "    <driver id=\"1\" name=\"agent\" module=\"snmp_configuration_agent.so\"/>\n"
    "    <driver id=\"12\" name=\"kitchen\" module=\"simulated_device.so\"><config folder=\"{project}\"/></driver>\n"
    "  </project>\n"
    "  $ cat rename.devhost\n"
    "  device kitchen set sysName 'kitchen north'\n"
    "  command GetDeviceList\n"
    "  expect reply matches '>kitchen north<'\n"
    "  $ devhost run --project project.xml rename.devhost\n"
    "\n"
    "More: \"man devhost\" (docs/man/devhost.1) and docs/scripts.md.";

std::string ActionTable() {
  std::size_t width = 0;
  for (const ActionForm& form : ActionForms()) {
    width = std::max(width, std::strlen(form.synopsis));
  }
  std::string table = "Actions of a script, one on each line:\n";
  for (const ActionForm& form : ActionForms()) {
    const std::string synopsis = form.synopsis;
    table += "  " + synopsis + std::string(width + 2 - synopsis.size(), ' ') + form.meaning + "\n";
  }
  return table + "\n";
}

}  // namespace

const char kMainFooter[] =
    "Exit status: 0 all is well; 1 something was found, refused or failed, as the output\n"
    "tells; 2 wrong usage, or a file that is wrong or cannot be read. Each command's own help\n"
    "tells what that means there.\n"
    "\n"
    "Example: ask the agent for its devices.\n"
    "\n"
    "  echo 'command GetDeviceList' | devhost run -\n"
    "\n"
    "\"devhost run --help\" tells what a script can do.";

const char kCheckFooter[] =
    "Each finding is one line, FILE:LINE: SEVERITY: reason [RULE], and a second one with what\n"
    "to do. An error means that the daemon or the agent does something else than the file\n"
    "seems to say, or that text will be lost; a warning, that it may surprise; a note, which is\n"
    "not counted as a finding, that a device which has lost its settings would misread the\n"
    "line. The rules are in docs/check-rules.md.\n"
    "\n"
    "Exit status: 0 no finding; 1 findings; 2 wrong usage, a file that cannot be read, or a\n"
    "daemon that cannot be asked.\n"
    "\n"
    "Example: look at this machine's file, with the daemon's own parser, too.\n"
    "\n"
    "  devhost check --daemon /etc/snmp/snmpd.conf";

const char kAdviseFooter[] =
    "The rules are those of \"devhost check\". Advice changes nothing and stops nothing: the\n"
    "agent writes what it is sent.\n"
    "\n"
    "Exit status: 0 no finding; 1 findings; 2 wrong usage, or a file that cannot be read or\n"
    "is no device settings element.\n"
    "\n"
    "Example: is there anything in these settings that the daemon would misread?\n"
    "\n"
    "  devhost advise kitchen.xml";

const char kPreviewFooter[] =
    "The agent of the project does it, on a scratch copy of the device. The project's own\n"
    "folders are only read, and no daemon is started. The time stamp of the section is left\n"
    "out of the comparison.\n"
    "\n"
    "Exit status: 0 the answer was printed; 1 the agent refused the settings or a driver\n"
    "failed; 2 wrong usage, or a project, device, file or state folder that is wrong.\n"
    "\n"
    "Example: what would these settings change?\n"
    "\n"
    "  devhost preview --project project.xml kitchen kitchen.xml";

std::string RunFooter() {
  return ActionTable() + kRunFooter;
}

}  // namespace devhost

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

#include "devhost/commands/Commands.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/commands/Playing.h"
#include "devhost/engine/HostError.h"
#include "devhost/project/DriverNames.h"
#include "devhost/script/ScriptActions.h"
#include "devhost/script/ScriptReader.h"
#include "devhost/script/ScriptRunner.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

const CommandOption kScript{
    "script", "", "The script, - for standard input; without one, the drivers are loaded and unloaded", Takes::Path};

constexpr char kFooter[] =
    "DRIVER is the name or id of a driver in the project. Words are quoted as in a shell, #\n"
    "starts a comment, PARAM=@FILE takes the text of a file, which may be a pipe as the script\n"
    "may.\n"
    "\n"
    "Without --state, states are kept from restart to restart of the run. A driver that was\n"
    "handed a state and listens to project loads is asked for a new one only after\n"
    "load-project.\n"
    "\n"
    "The whole project and script are checked before the first driver is loaded. Then\n"
    "everything that happens is printed in order, one line each; the first word says what\n"
    "it is: load, unload, command, reply, notification, event, log, invalidate, status,\n"
    "manners, file, settings, counts, variable, user-variable, flag, state, daemon, run,\n"
    "output, print, restart, error, expect. What may be a secret is shown as *****.\n"
    "With --json each line is an object instead; docs/scripts.md has its members.\n"
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

template <class Forms>
std::string Table(const char* title, const Forms& forms) {
  std::size_t width = 0;
  for (const auto& form : forms) {
    width = std::max(width, std::strlen(form.synopsis));
  }
  std::string table = title;
  for (const auto& form : forms) {
    const std::string synopsis = form.synopsis;
    table += "  " + synopsis + std::string(width + 2 - synopsis.size(), ' ') + form.meaning + "\n";
  }
  return table + "\n";
}

// One line for people who look at the end of the output only.
std::string Summary(const ScriptRunner::Result& result) {
  struct Part {
    std::size_t count;
    const char* before;
    const char* noun;
    const char* after;
  };
  const Part parts[] = {{result.actionsFailed, "", "action", " failed"},
                        {result.expectationsFailed, "", "expectation", " not met"},
                        {result.badManners, "the host's rules broken ", "time", ""},
                        {result.driversFailed, "the start of ", "driver", " failed"},
                        {result.stateProblems, "", "problem", " with a driver's state"}};
  std::string text;
  for (const Part& part : parts) {
    if (part.count != 0) {
      text += (text.empty() ? "" : ", ") + (part.before + Counted(part.count, part.noun) + part.after);
    }
  }
  return text + "; first: " + result.first;
}

ExitStatus Run(const Arguments& arguments, Console& console) {
  Masker secrets(arguments.Has(kShowSecrets));
  const std::unique_ptr<Reporter> reporter = MakeReporter(arguments, console.Out());
  const Project project = PlayedProject(arguments);
  const DriverNames names(project.drivers);
  const Script script = arguments.Has(kScript) ? LoadScript(arguments.Text(kScript)) : Script();
  CheckScript(script, names);
  const std::unique_ptr<StateStore> states = OpenStates(arguments);
  ScriptRunner runner(project, names, *states, *reporter, secrets);
  try {
    runner.Start();
  } catch (const HostError& error) {
    console.Complain(secrets.Text(error.what()));
    return ExitStatus::Wrong;
  }
  runner.Play(script);
  runner.Stop();
  if (!runner.GetResult().Good()) {
    console.Complain(Summary(runner.GetResult()));
    return ExitStatus::Failed;
  }
  return ExitStatus::Good;
}

}  // namespace

Command MakeRun() {
  return {"run",
          "Load the drivers of a project, play a script, unload the drivers",
          {kScript, kPlayedProject, kModuleFolder, kPlayedStates, kJsonLines, kPretty, kColor, kShowSecrets},
          Table("Actions of a script, one on each line:\n", ActionForms()) +
              Table("SUBJECT is one of these:\n", SubjectForms()) + kFooter,
          &Run};
}

}  // namespace devhost

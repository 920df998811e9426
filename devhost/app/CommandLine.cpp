#include "devhost/app/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>

#include "devhost/app/ScriptActions.h"
#include "devhost/app/Words.h"

namespace devhost {

namespace {

constexpr char kVersion[] = "devhost 1.0.0";

constexpr char kMainFooter[] =
    "Exit status: 0 all went well; 1 an action or expectation of a script failed, a\n"
    "driver could not start or broke the host's rules, or a driver's state or the output\n"
    "could not be read or written; 2 wrong usage, or a project, script, module or state\n"
    "folder that is wrong (nothing of the script was played).\n"
    "\n"
    "Example: ask the agent for its devices.\n"
    "\n"
    "  echo 'command GetDeviceList' | devhost run -\n"
    "\n"
    "\"devhost run --help\" tells what a script can do.";

constexpr char kRunFooter[] =
    "SUBJECT is one of: reply, notification, log (the last one each), setting DRIVER NAME,\n"
    "file DRIVER, flag DEVICE ID, state DRIVER. DRIVER is the name or id of a driver in the\n"
    "project. Words are quoted as in a shell, # starts a comment, PARAM=@FILE takes the text\n"
    "of a file, which may be a pipe as the script may.\n"
    "\n"
    "The whole project and script are checked before the first driver is loaded. Then\n"
    "everything that happens is printed in order, one line each; the first word tells what\n"
    "it is: load, unload, command, reply, notification, event, log, invalidate, manners,\n"
    "file, settings, counts, variable, user-variable, flag, state, print, restart, error,\n"
    "expect.\n"
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

// The library's layout, without its habit of naming types and repeating what the description says.
class Formatter : public CLI::Formatter {
 public:
  Formatter() {
    column_width(28);
    label("OPTIONS", "options");
    label("SUBCOMMAND", "command");
    label("Positionals", "Arguments");
    label("Subcommands", "Commands");
  }
  std::string make_option_opts(const CLI::Option* option) const override {
    return option->get_type_size() == 0 || option->get_positional() ? "" : " " + option->get_type_name();
  }
};

class Parser {
 public:
  explicit Parser(const std::string& moduleFolder)
      : m_app("Loads drivers as a controller would and plays a script to them.", "devhost") {
    m_line.run.moduleFolder = moduleFolder;
    m_app.formatter(std::make_shared<Formatter>());
    m_app.footer(kMainFooter);
    m_app.set_help_flag("-h,--help", "Print this help");
    m_app.set_version_flag("--version", kVersion, "Print the version");
    m_app.require_subcommand(1);
    AddRun();
  }

  CommandLine Parse(int argc, const char* const* argv) {
    if (argc < 2) {
      m_line.text = m_app.help();
      return m_line;
    }
    try {
      m_app.parse(argc, argv);
      m_line.kind = CommandLine::Kind::Run;
    } catch (const CLI::CallForHelp&) {
      Answer(Help());
    } catch (const CLI::CallForVersion& version) {
      Answer(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
      m_line.text = "devhost: " + Problem(error, argv[1]) + "\n";
      m_line.text += m_run->parsed() ? "Try \"devhost run --help\".\n" : "Try \"devhost --help\".\n";
    }
    return m_line;
  }

 private:
  // The library names arguments that it did not expect, but neither commands that do not exist nor what is allowed.
  std::string Problem(const CLI::ParseError& error, const std::string& first) const {
    if (!m_run->parsed()) {
      return first.compare(0, 1, "-") == 0
                 ? "there is no option " + Quoted(first) + "; allowed: --help, --version, or a command"
                 : "there is no command " + Quoted(first) + "; allowed: run";
    }
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
      return OneLine(error.what()) + "; allowed: one script and the options of run";
    }
    const std::string what = OneLine(error.what());
    const std::string misuse = dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr
                                   ? Misuse(what.substr(0, what.find_first_of(": ")))
                                   : "";
    return misuse.empty() ? what : misuse;
  }

  // What is wrong with an option that has too many values, too few, or one that it does not take; "" when there is none.
  std::string Misuse(const std::string& name) const {
    for (const CLI::Option* const option : m_run->get_options()) {
      if (!option->check_name(name) && !option->check_lname(name)) {
        continue;
      }
      const std::string flag = option->get_name();
      const std::string form = flag + " " + option->get_type_name();
      return option->get_expected_max() == 0 ? flag + " has a value; allowed: " + flag + " alone"
             : option->count() > 1 ? flag + " is given " + std::to_string(option->count()) + " times; allowed: once"
                                   : flag + " has no value; allowed: " + form;
    }
    return "";
  }

  static std::string Named(const std::string& path) { return path.empty() ? "the name is empty; allowed: a path" : ""; }

  void AddRun() {
    m_run = m_app.add_subcommand("run", "Load the drivers of a project, play a script, unload the drivers");
    m_run->footer(ActionTable() + kRunFooter);
    RunOptions& run = m_line.run;
    m_run
        ->add_option("script", run.script,
                     "The script, - for standard input; without one, the drivers are loaded and unloaded")
        ->type_name("")
        ->check(Named);
    m_run->add_option("--project", run.project, "Project file; without one, the agent alone is loaded as driver 1")
        ->type_name("FILE")
        ->check(Named);
    m_run->add_option("--module-dir", run.moduleFolder, "Where driver modules lie (default: ../lib beside the program)")
        ->type_name("DIR")
        ->check(Named);
    m_run
        ->add_option("--state", run.state,
                     "Keep the drivers' states in this folder, which is made when missing; without it, they are kept\n"
                     "from restart to restart of this run. A driver that was handed a state is asked for a new one only\n"
                     "after load-project")
        ->type_name("DIR")
        ->check(Named);
    m_run
        ->add_flag("--pretty", run.pretty,
                   "Print XML indented, on several lines, where one line would be longer than 100 characters")
        ->disable_flag_override();
    m_run->add_option("--color", run.color, "Colour the first words: auto (on a terminal), always, never")
        ->type_name("WHEN")
        ->check([](const std::string& when) {
          const bool known = when == "auto" || when == "always" || when == "never";
          return known ? std::string() : Quoted(when) + " is no such time; allowed: auto, always, never";
        });
  }

  std::string Help() const { return m_run->parsed() ? m_run->help("devhost") : m_app.help(); }

  void Answer(const std::string& text) {
    m_line.kind = CommandLine::Kind::Answer;
    m_line.text = text;
  }

  CLI::App m_app;
  CLI::App* m_run = nullptr;
  CommandLine m_line;
};

}  // namespace

CommandLine ParseCommandLine(int argc, const char* const* argv, const std::string& moduleFolder) {
  return Parser(moduleFolder).Parse(argc, argv);
}

}  // namespace devhost

#include "devhost/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <vector>

#include "devhost/commands/CommandHelp.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr char kVersion[] = "devhost 1.0.0";

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
      : m_app("Loads drivers as a controller would and plays a script to them; looks at what they will read and write.",
              "devhost"),
        m_moduleFolder(moduleFolder) {
    m_app.formatter(std::make_shared<Formatter>());
    m_app.footer(kMainFooter);
    m_app.set_help_flag("-h,--help", "Print this help");
    m_app.set_version_flag("--version", kVersion, "Print the version");
    m_app.require_subcommand(1);
    AddRun();
    AddCheck();
    AddAdvise();
    AddPreview();
  }

  CommandLine Parse(int argc, const char* const* argv) {
    if (argc < 2) {
      m_line.text = m_app.help();
      return m_line;
    }
    try {
      m_app.parse(argc, argv);
      m_line.kind = Parsed()->kind;
    } catch (const CLI::CallForHelp&) {
      const Command* const command = Parsed();
      Answer(command != nullptr ? command->app->help("devhost") : m_app.help());
    } catch (const CLI::CallForVersion& version) {
      Answer(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
      const Command* const command = Parsed();
      m_line.text = "devhost: " + (command != nullptr ? Problem(error, *command) : NoCommand(argv[1])) + "\n";
      m_line.text += "Try \"devhost " + (command != nullptr ? command->app->get_name() + " " : "") + "--help\".\n";
    }
    return m_line;
  }

 private:
  struct Command {
    CLI::App* app;
    CommandLine::Kind kind;
    const char* arguments;  // what it takes beside options, for messages
  };

  // The command on the line, or null.
  const Command* Parsed() const {
    for (const Command& command : m_commands) {
      if (command.app->parsed()) {
        return &command;
      }
    }
    return nullptr;
  }

  // The library names neither commands that do not exist nor what is allowed.
  std::string NoCommand(const std::string& word) const {
    if (word.compare(0, 1, "-") == 0) {
      return "there is no option " + Quoted(word) + "; allowed: --help, --version, or a command";
    }
    std::string names;
    for (const Command& command : m_commands) {
      names += (names.empty() ? "" : ", ") + command.app->get_name();
    }
    return "there is no command " + Quoted(word) + "; allowed: " + names;
  }

  // The library names arguments that it did not expect, but not what is allowed.
  static std::string Problem(const CLI::ParseError& error, const Command& command) {
    const std::string what = OneLine(error.what());
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
      return what + "; allowed: " + command.arguments + " and the options of " + command.app->get_name();
    }
    const bool mismatch = dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr;
    const bool missing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const std::string misuse = mismatch || missing ? Misuse(*command.app, what.substr(0, what.find_first_of(": "))) : "";
    return misuse.empty() ? what : misuse;
  }

  // What is wrong with an option or argument that has too many values, too few, or one that it does not take; "" when there
  // is none of that name.
  static std::string Misuse(const CLI::App& app, const std::string& name) {
    for (const CLI::Option* const option : app.get_options()) {
      if (!option->check_name(name) && !option->check_lname(name)) {
        continue;
      }
      const std::string flag = option->get_name();
      const std::string form =
          option->get_positional() ? "the argument " + Quoted(flag) : flag + " " + option->get_type_name();
      return option->get_expected_max() == 0 ? flag + " has a value; allowed: " + flag + " alone"
             : option->count() > 1    ? flag + " is given " + std::to_string(option->count()) + " times; allowed: once"
             : option->get_required() ? form + " is missing"
                                      : flag + " has no value; allowed: " + form;
    }
    return "";
  }

  static std::string Named(const std::string& path) { return path.empty() ? "the name is empty; allowed: a path" : ""; }

  CLI::App& Add(CommandLine::Kind kind, const char* name, const char* what, const char* arguments,
                const std::string& footer) {
    CLI::App* const app = m_app.add_subcommand(name, what);
    app->footer(footer);
    m_commands.push_back({app, kind, arguments});
    return *app;
  }

  static CLI::Option& AddPath(CLI::App& app, const char* name, std::string& value, const char* what, const char* type) {
    return *app.add_option(name, value, what)->type_name(type)->check(Named);
  }

  static void AddFlag(CLI::App& app, const char* name, bool& value, const char* what) {
    app.add_flag(name, value, what)->disable_flag_override();
  }

  static void AddShowSecrets(CLI::App& app, bool& value) {
    AddFlag(app, "--show-secrets", value, "Print communities and passphrases as they are, not as *****");
  }

  void AddModuleFolder(CLI::App& app, std::string& value) {
    value = m_moduleFolder;
    AddPath(app, "--module-dir", value, "Where driver modules lie (default: ../lib beside the program)", "DIR");
  }

  void AddRun() {
    CLI::App& app = Add(CommandLine::Kind::Run, "run", "Load the drivers of a project, play a script, unload the drivers",
                        "one script", RunFooter());
    RunOptions& run = m_line.run;
    AddPath(app, "script", run.script, "The script, - for standard input; without one, the drivers are loaded and unloaded",
            "");
    AddPath(app, "--project", run.project, "Project file; without one, the agent alone is loaded as driver 1", "FILE");
    AddModuleFolder(app, run.moduleFolder);
    AddPath(app, "--state", run.state,
            "Keep the drivers' states in this folder, which is made when missing; without it, they are kept\n"
            "from restart to restart of this run. A driver that was handed a state and listens to project loads\n"
            "is asked for a new one only after load-project",
            "DIR");
    AddFlag(app, "--pretty", run.pretty,
            "Print XML indented, on several lines, where one line would be longer than 100 characters");
    app.add_option("--color", run.color, "Colour the first words: auto (on a terminal), always, never")
        ->type_name("WHEN")
        ->check([](const std::string& when) {
          const bool known = when == "auto" || when == "always" || when == "never";
          return known ? std::string() : Quoted(when) + " is no such time; allowed: auto, always, never";
        });
    AddShowSecrets(app, run.showSecrets);
  }

  void AddCheck() {
    CLI::App& app =
        Add(CommandLine::Kind::Check, "check", "Say what in an snmpd.conf will surprise its owner", "files", kCheckFooter);
    CheckOptions& check = m_line.check;
    app.add_option("files", check.files, "The files, - for standard input")->type_name("")->check(Named)->required();
    AddFlag(app, "--json", check.json, "Print one JSON object for each finding, on a line of its own");
    AddFlag(app, "--daemon", check.daemon, "Have the parser of the installed snmpd read the files, too");
    AddShowSecrets(app, check.showSecrets);
  }

  void AddAdvise() {
    CLI::App& app = Add(CommandLine::Kind::Advise, "advise", "Say what in settings will surprise, before they are sent",
                        "one file of settings", kAdviseFooter);
    AdviseOptions& advise = m_line.advise;
    AddPath(app, "settings", advise.settings, "File of a device settings element, - for standard input", "").required();
    AddFlag(app, "--json", advise.json, "Print one JSON object for each finding, on a line of its own");
    AddShowSecrets(app, advise.showSecrets);
  }

  void AddPreview() {
    CLI::App& app = Add(CommandLine::Kind::Preview, "preview", "Show what SetDeviceState would change in a device's file",
                        "a device, a file of settings", kPreviewFooter);
    PreviewOptions& preview = m_line.preview;
    app.add_option("device", preview.device, "Name or id of the device's driver in the project")->type_name("")->required();
    AddPath(app, "settings", preview.settings, "File of a device settings element, - for standard input", "").required();
    AddPath(app, "--project", preview.project, "Project file", "FILE").required();
    AddModuleFolder(app, preview.moduleFolder);
    AddPath(app, "--state", preview.state, "Folder with the drivers' states, which is only read", "DIR");
    AddShowSecrets(app, preview.showSecrets);
  }

  void Answer(const std::string& text) {
    m_line.kind = CommandLine::Kind::Answer;
    m_line.text = text;
  }

  CLI::App m_app;
  std::vector<Command> m_commands;
  const std::string m_moduleFolder;
  CommandLine m_line;
};

}  // namespace

CommandLine ParseCommandLine(int argc, const char* const* argv, const std::string& moduleFolder) {
  return Parser(moduleFolder).Parse(argc, argv);
}

}  // namespace devhost

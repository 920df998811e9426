#include "devhost/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <utility>

#include "devhost/commands/CommonOptions.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr char kVersionText[] = "devhost " DEVHOST_VERSION;
// The library's own word between two options.
constexpr char kExcludes[] = " excludes ";
constexpr char kMeaning[] =
    "Loads drivers as a controller would and plays a script to them; looks at what they will read and write.";
constexpr char kFooter[] =
    "Exit status: 0 all is well; 1 something was found, refused or failed, as the output says;\n"
    "2 wrong usage, or a file that is wrong or cannot be read. Each command's own help says\n"
    "what that means there.\n"
    "\n"
    "Example: ask the agent for its devices.\n"
    "\n"
    "  echo 'command GetDeviceList' | devhost run -\n"
    "\n"
    "\"devhost run --help\" says what a script can do.";

// The library's layout, without its habit of naming types and repeating what the description says.
class Formatter : public CLI::Formatter {
 public:
  Formatter() {
    column_width(28);
    label("OPTIONS", "options");
    label("SUBCOMMAND", "command");
    label("Positionals", "Arguments");
  }
  std::string make_option_opts(const CLI::Option* option) const override {
    return option->get_type_size() == 0 || option->get_positional() ? "" : " " + option->get_type_name();
  }
};

std::string NeedName(const std::string& path) {
  return path.empty() ? "the name is empty; allowed: a path" : "";
}

void Exclude(CLI::App& app, CLI::Option& option, const std::vector<const char*>& others) {
  for (const char* const other : others) {
    option.excludes(app.get_option(other));
  }
}

void AddOption(CLI::App& app, const CommandOption& option) {
  using Takes = CommandOption::Takes;
  if (option.takes == Takes::Nothing) {
    CLI::Option* const flag = app.add_flag(option.name, option.meaning)->disable_flag_override();
    return Exclude(app, *flag, option.without);
  }
  CLI::Option* const added = app.add_option(option.name, CLI::callback_t(), option.meaning);
  Exclude(app, *added, option.without);
  added->type_name(option.value)->required(option.isRequired);
  if (option.isHidden) {
    added->group("");
  }
  if (option.takes == Takes::Paths) {
    added->expected(CLI::detail::expected_max_vector_size);
  }
  if (option.takes == Takes::Path || option.takes == Takes::Paths || option.takes == Takes::Folder) {
    added->check(NeedName);
  }
  if (option.takes == Takes::Choice) {
    const std::vector<std::string>& choices = option.choices;
    added->check([choices](const std::string& word) {
      const bool known = std::find(choices.begin(), choices.end(), word) != choices.end();
      return known ? std::string() : Quoted(word) + " is unknown; allowed: " + CLI::detail::join(choices, ", ");
    });
  }
}

// What is wrong with an option or argument that has too many values, too few, or one that it does not take; "" when there is
// none of that name. The library does not say what is allowed.
std::string Misuse(const CLI::App& app, const std::string& name) {
  for (const CLI::Option* const option : app.get_options()) {
    if (!option->check_name(name) && !option->check_lname(name)) {
      continue;
    }
    const std::string flag = option->get_name();
    const std::string form =
        option->get_positional() ? "the argument " + Quoted(flag) : flag + " " + option->get_type_name();
    return option->get_expected_max() == 0 ? flag + " has a value; allowed: " + flag + " alone"
           : option->count() > 1           ? flag + " is given " + std::to_string(option->count()) + " times; allowed: once"
           : option->get_required()        ? form + " is missing"
                                           : flag + " has no value; allowed: " + form;
  }
  return "";
}

// People write the two words of "fleet OPERATION INVENTORY" in either order. Where the first argument of a command is one of
// few words, and of two words in front of all options only the second is one of them, the two change places.
void PutChoiceFirst(const std::vector<Command>& commands, std::vector<const char*>& line) {
  if (line.size() < 4 || line[2][0] == '-') {
    return;
  }
  const auto command = std::find_if(commands.begin(), commands.end(),
                                    [&line](const Command& each) { return std::strcmp(each.name, line[1]) == 0; });
  if (command == commands.end() || command->options.size() < 2 || !command->options[0].IsArgument() ||
      !command->options[1].IsArgument()) {
    return;
  }
  const std::vector<std::string>& choices = command->options[0].choices;  // none where any text will do
  const auto isChoice = [&choices](const char* word) {
    return std::find(choices.begin(), choices.end(), word) != choices.end();
  };
  if (!isChoice(line[2]) && isChoice(line[3])) {
    std::swap(line[2], line[3]);
  }
}

class Parser {
 public:
  explicit Parser(const std::vector<Command>& commands) : m_app(kMeaning, "devhost"), m_commands(commands) {
    m_app.formatter(std::make_shared<Formatter>());
    m_app.footer(kFooter);
    m_app.set_help_flag(std::string("-h,") + kHelp.name, kHelp.meaning);
    m_app.set_version_flag(kVersion.name, kVersionText, kVersion.meaning);
    m_app.require_subcommand(1);
    for (const Command& command : commands) {
      CLI::App* const app = m_app.add_subcommand(command.name, command.meaning);
      app->footer(command.footer)->group("Commands");
      for (const CommandOption& option : command.options) {
        AddOption(*app, option);
      }
      app->callback([this, app, &command] { Take(*app, command); });
    }
  }

  CommandLine Parse(int argc, const char* const* argv) {
    if (argc < 2) {
      return {nullptr, {}, ExitStatus::Wrong, m_app.help()};
    }
    std::vector<const char*> line(argv, argv + argc);
    PutChoiceFirst(m_commands, line);
    try {
      m_app.parse(argc, line.data());
      return m_line;
    } catch (const CLI::CallForHelp&) {
      return {nullptr, {}, ExitStatus::Good, App() != nullptr ? App()->help("devhost") : m_app.help()};
    } catch (const CLI::CallForVersion& version) {
      return {nullptr, {}, ExitStatus::Good, std::string(version.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
      const std::string problem = App() != nullptr ? Problem(error, *App()) : NoCommand(argv[1]);
      const std::string name = App() != nullptr ? App()->get_name() + " " : "";
      return {nullptr, {}, ExitStatus::Wrong, "devhost: " + problem + "\nTry \"devhost " + name + "--help\".\n"};
    }
  }

 private:
  // The command on the line as the library sees it, or null.
  const CLI::App* App() const {
    const std::vector<CLI::App*> parsed = m_app.get_subcommands();
    return parsed.empty() ? nullptr : parsed.front();
  }

  void Take(const CLI::App& app, const Command& command) {
    m_line.command = &command;
    for (const CommandOption& option : command.options) {
      if (app.count(option.name) != 0) {
        m_line.arguments.Add(option, app.get_option(option.name)->results());
      }
    }
  }

  // The library names neither commands that do not exist nor what is allowed.
  std::string NoCommand(const std::string& word) const {
    if (word.compare(0, 1, "-") == 0) {
      return "there is no option " + Quoted(word) + "; allowed: --help, --version, or a command";
    }
    const auto name = [](const Command& command) { return std::string(command.name); };
    return "there is no command " + Quoted(word) + "; allowed: " + CLI::detail::join(m_commands, name, ", ");
  }

  // The library names arguments that it did not expect, but not what is allowed.
  static std::string Problem(const CLI::ParseError& error, const CLI::App& app) {
    const std::string what = OneLine(error.what());
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
      const std::string usage = Formatter().make_usage(&app, "devhost " + app.get_name());
      const std::size_t start = usage.find("devhost");
      return what + "; allowed: " + usage.substr(start, usage.find('\n', start) - start);
    }
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
      const std::size_t at = what.find(kExcludes);
      return what.substr(0, at) + " and " + what.substr(at + std::strlen(kExcludes)) +
             " cannot stand together; allowed: one of the two";
    }
    const bool mismatch = dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr;
    const bool missing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const std::string misuse = mismatch || missing ? Misuse(app, what.substr(0, what.find_first_of(": "))) : "";
    return misuse.empty() ? what : misuse;
  }

  CLI::App m_app;
  const std::vector<Command>& m_commands;
  CommandLine m_line;
};

}  // namespace

CommandLine ParseCommandLine(int argc, const char* const* argv, const std::vector<Command>& commands) {
  return Parser(commands).Parse(argc, argv);
}

}  // namespace devhost

#ifndef DEVHOST_COMMANDS_COMMAND_H
#define DEVHOST_COMMANDS_COMMAND_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "devhost/commands/ExitStatus.h"

namespace devhost {

class Console;

class Arguments;

// What a shell may offer for a word.
struct Candidate {
  std::string text;
  std::string meaning;  // "" when the text says it all
};

// One option or argument of a command. The command line, its help and the messages for wrong usage are made of these.
struct CommandOption {
  enum class Takes { Nothing, Text, Choice, Path, Paths, Folder };
  // The values that could stand here, for completion: `written` is the line so far, `word` the beginning of the value.
  using Suggest = std::vector<Candidate> (*)(const Arguments& written, const std::string& word);

  bool IsArgument() const { return name[0] != '-'; }

  const char* name;     // "--project"; the name of an argument has no dashes
  const char* value;    // what the help calls the value: "FILE"; "" for an argument, and for an option that takes nothing
  const char* meaning;  // in one line
  Takes takes = Takes::Nothing;
  bool isRequired = false;
  std::vector<std::string> choices = {};  // the values that Takes::Choice allows
  std::vector<const char*> without = {};  // the names of options, declared before this one, that it cannot stand beside
  Suggest suggest = nullptr;
  bool isHidden = false;  // the program gives it to itself; no help names it
};

// What a command line gave for the options and arguments of its command.
class Arguments {
 public:
  void Add(const CommandOption& option, std::vector<std::string> texts) { m_texts[option.name] = std::move(texts); }

  bool Has(const CommandOption& option) const { return m_texts.count(option.name) != 0; }
  // The values in the order in which they were given; none when the option was not.
  std::vector<std::string> Texts(const CommandOption& option) const {
    const auto found = m_texts.find(option.name);
    return found == m_texts.end() ? std::vector<std::string>() : found->second;
  }
  // The value of an option that has only one; "" when it was not given.
  std::string Text(const CommandOption& option) const {
    const std::vector<std::string> texts = Texts(option);
    return texts.empty() ? "" : texts.front();
  }

 private:
  std::map<std::string, std::vector<std::string>> m_texts;
};

// One command of the program: what is said about it, and what it does.
struct Command {
  // Does what was asked for. What cannot be done at all is thrown; Commands.cpp knows the exit status for each error.
  using Run = ExitStatus (*)(const Arguments& arguments, Console& console);

  const char* name;
  const char* meaning;  // in one line
  // And arguments, which stand in this order on the command line. A first one with choices may stand behind the second.
  std::vector<CommandOption> options;
  std::string footer;  // ends the help: exit statuses and an example
  Run run;
};

}  // namespace devhost

#endif

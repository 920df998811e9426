#include "devhost/commands/Completion.h"

#include <algorithm>
#include <cstddef>
#include <exception>

#include "devhost/commands/CommonOptions.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Takes = CommandOption::Takes;

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

// The command line of one command, read from the left as far as it is written.
class WrittenLine {
 public:
  explicit WrittenLine(const Command& command) : m_command(command) {}

  // The next word; it is complete.
  void Take(const std::string& word) {
    if (m_waiting != nullptr) {
      TakeValue(word);
    } else if (word == "--") {
      m_argumentsOnly = true;
    } else if (IsOption(word)) {
      TakeOption(word);
    } else if (const CommandOption* const argument = NextArgument(); argument != nullptr) {
      m_arguments.Add(*argument, {word});
      m_taken += argument->takes == Takes::Paths ? 0 : 1;
    }
  }

  // What can stand for the word that is being written.
  Completion Offer(const std::string& word) const {
    Completion completion;
    if (m_waiting != nullptr) {
      // The "=" itself may be the word, before anything stands behind it.
      OfferValue(*m_waiting, word == "=" && !m_hasEquals ? "" : word, "", completion);
    } else if (IsOption(word)) {
      const std::size_t equals = word.find('=');
      const CommandOption* const option = equals == std::string::npos ? nullptr : Find(word.substr(0, equals));
      if (option != nullptr) {
        OfferValue(*option, word.substr(equals + 1), word.substr(0, equals + 1), completion);
      } else {
        OfferOptions(word, completion);
      }
    } else if (const CommandOption* const argument = NextArgument(); argument != nullptr) {
      OfferValue(*argument, word, "", completion);
    }
    return completion;
  }

 private:
  // A lone "-" stands for standard input.
  bool IsOption(const std::string& word) const { return !m_argumentsOnly && word.size() > 1 && word[0] == '-'; }

  const CommandOption* Find(const std::string& name) const {
    for (const CommandOption& option : m_command.options) {
      if (!option.IsArgument() && option.takes != Takes::Nothing && name == option.name) {
        return &option;
      }
    }
    return nullptr;
  }

  const CommandOption* NextArgument() const {
    std::size_t number = 0;
    for (const CommandOption& option : m_command.options) {
      if (option.IsArgument() && number++ == m_taken) {
        return &option;
      }
    }
    return nullptr;
  }

  void TakeOption(const std::string& word) {
    const std::size_t equals = std::min(word.find('='), word.size());
    const std::string name = word.substr(0, equals);
    m_written.push_back(name);
    const CommandOption* const option = Find(name);
    if (option != nullptr && equals != word.size()) {
      m_arguments.Add(*option, {word.substr(equals + 1)});
    } else {
      m_waiting = option;
      m_hasEquals = false;
    }
  }

  void TakeValue(const std::string& word) {
    if (word == "=" && !m_hasEquals) {
      m_hasEquals = true;
      return;
    }
    m_arguments.Add(*m_waiting, {word});
    m_waiting = nullptr;
  }

  // Whether no option that excludes it is written.
  bool MayStand(const CommandOption& option) const {
    const auto isWritten = [this](const char* name) {
      return std::find(m_written.begin(), m_written.end(), name) != m_written.end();
    };
    const auto excludes = [&](const CommandOption& other) {
      return isWritten(other.name) &&
             std::find(other.without.begin(), other.without.end(), std::string(option.name)) != other.without.end();
    };
    return std::none_of(option.without.begin(), option.without.end(), isWritten) &&
           std::none_of(m_command.options.begin(), m_command.options.end(), excludes);
  }

  void OfferOptions(const std::string& word, Completion& completion) const {
    std::vector<CommandOption> options = m_command.options;
    options.push_back(kHelp);
    for (const CommandOption& option : options) {
      const bool isWritten = std::count(m_written.begin(), m_written.end(), option.name) != 0;
      if (!option.IsArgument() && !option.isHidden && !isWritten && MayStand(option) && StartsWith(option.name, word)) {
        completion.candidates.push_back({option.name, option.meaning});
      }
    }
  }

  // `before` belongs to the same word of the shell.
  void OfferValue(const CommandOption& option, const std::string& word, const std::string& before,
                  Completion& completion) const {
    std::vector<Candidate> candidates;
    for (const std::string& choice : option.choices) {
      candidates.push_back({choice, ""});
    }
    if (option.suggest != nullptr) {
      candidates = option.suggest(m_arguments, word);
    }
    for (const Candidate& candidate : candidates) {
      if (StartsWith(candidate.text, word)) {
        completion.candidates.push_back({before + candidate.text, candidate.meaning});
      }
    }
    const bool isFile = option.takes == Takes::Path || option.takes == Takes::Paths;
    completion.paths = isFile                          ? Completion::Paths::Files
                       : option.takes == Takes::Folder ? Completion::Paths::Folders
                                                       : Completion::Paths::None;
  }

  const Command& m_command;
  Arguments m_arguments;
  std::vector<std::string> m_written;        // the names of the options
  std::size_t m_taken = 0;                   // so many arguments
  const CommandOption* m_waiting = nullptr;  // the option whose value comes next
  bool m_hasEquals = false;
  bool m_argumentsOnly = false;
};

Completion OfferCommands(const std::string& word, const std::vector<Command>& commands) {
  Completion completion;
  for (const Command& command : commands) {
    if (StartsWith(command.name, word)) {
      completion.candidates.push_back({command.name, command.meaning});
    }
  }
  for (const CommandOption& option : {kHelp, kVersion}) {
    if (word[0] == '-' && StartsWith(option.name, word)) {
      completion.candidates.push_back({option.name, option.meaning});
    }
  }
  return completion;
}

}  // namespace

Completion Complete(const std::vector<std::string>& words, const std::vector<Command>& commands) {
  if (words.size() < 2) {
    return OfferCommands(words.empty() ? "" : words.front(), commands);
  }
  const auto command =
      std::find_if(commands.begin(), commands.end(), [&words](const Command& known) { return words.front() == known.name; });
  if (command == commands.end()) {
    return {};
  }
  WrittenLine line(*command);
  std::for_each(words.begin() + 1, words.end() - 1, [&line](const std::string& word) { line.Take(word); });
  return line.Offer(words.back());
}

std::string CompletionLines(const std::vector<std::string>& words, const std::vector<Command>& commands) {
  std::string lines;
  try {
    const Completion completion = Complete(words, commands);
    for (const Candidate& candidate : completion.candidates) {
      // A name that needs escapes cannot be a line of this form.
      if (OneLine(candidate.text) == candidate.text) {
        lines += candidate.text + "\t" + OneLine(candidate.meaning) + "\n";
      }
    }
    lines += completion.paths == Completion::Paths::Files     ? ":files\n"
             : completion.paths == Completion::Paths::Folders ? ":folders\n"
                                                              : "";
  } catch (const std::exception&) {
    // Nobody reads a message between two keys: the command itself says what is wrong with its project.
  }
  return lines;
}

}  // namespace devhost

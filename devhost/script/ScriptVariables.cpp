#include "devhost/script/ScriptVariables.h"

#include <charconv>
#include <cstdint>
#include <system_error>

#include "devhost/script/ScriptActions.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Words = std::vector<std::string>;

[[noreturn]] void Refuse(const std::string& problem, const std::string& allowed) {
  throw ActionError(problem + "; allowed: " + allowed);
}

// What to say about a line with a wrong number of words.
std::string WrongNumber(const Words& words, std::size_t needed) {
  return words.size() < needed ? "something is missing after " + Quoted(words.back())
                               : "there is something behind " + Quoted(words[words.size() - 2]);
}

void ParseOptions(const Words& words, std::size_t first, const std::string& form, VariableEntry& variable) {
  for (std::size_t i = first; i != words.size(); ++i) {
    bool& option = words[i] == "hidden" ? variable.hidden : variable.trapEnabled;
    if ((words[i] != "hidden" && words[i] != "trap") || option) {
      Refuse("a variable's name is followed by " + Quoted(words[i]), form);
    }
    option = true;
  }
}

}  // namespace

unsigned long ParseId(const std::string& word, const char* what) {
  std::uint32_t id = 0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, id);
  if (error != std::errc() || stop != end) {
    throw ActionError(std::string("the ") + what + " is " + Quoted(word) + "; allowed: a whole number from 0 to 4294967295");
  }
  return id;
}

Action ParseVariable(const Words& words) {
  const std::string& subject = words.front();
  const std::string addForm = subject + " add DEVICE ID NAME [hidden] [trap]";
  const std::string removeForm = subject + " remove DEVICE ID";
  const std::string verb = words.size() > 1 ? words[1] : std::string();
  if (verb != "add" && verb != "remove") {
    Refuse(verb.empty() ? "nothing is said about what becomes of the variable" : "a variable cannot " + Quoted(verb),
           addForm + ", " + removeForm);
  }
  VariableAction action;
  action.add = verb == "add";
  if (action.add ? words.size() < 5 : words.size() != 4) {
    Refuse(WrongNumber(words, action.add ? 5 : 4), action.add ? addForm : removeForm);
  }
  action.variable.user = subject == "user-variable";
  action.variable.deviceId = ParseId(words[2], "device");
  action.variable.variableId = ParseId(words[3], "variable's id");
  if (action.add) {
    action.variable.name = words[4];
    if (action.variable.name.empty()) {
      Refuse("the variable's name is empty", addForm);
    }
    ParseOptions(words, 5, addForm, action.variable);
  }
  return action;
}

Action ParseItem(const Words& words) {
  constexpr char kForm[] = "item remove ITEM [ROOM]";
  if (words.size() > 1 && words[1] != "remove") {
    Refuse("an item cannot " + Quoted(words[1]), kForm);
  }
  if (words.size() < 3 || words.size() > 4) {
    Refuse(WrongNumber(words, 3), kForm);
  }
  return RemoveItemAction{ParseId(words[2], "item"), words.size() == 4 ? ParseId(words[3], "room") : 0};
}

Action ParseFlag(const Words& words) {
  constexpr char kForm[] = "flag DEVICE ID true|false";
  if (words.size() != 4) {
    Refuse(WrongNumber(words, 4), kForm);
  }
  if (words[3] != "true" && words[3] != "false") {
    Refuse("a flag cannot be " + Quoted(words[3]), kForm);
  }
  return FlagAction{ParseId(words[1], "device"), ParseId(words[2], "variable's id"), words[3] == "true"};
}

}  // namespace devhost

#ifndef DEVHOST_SCRIPT_SCRIPT_ACTIONS_H
#define DEVHOST_SCRIPT_SCRIPT_ACTIONS_H

#include <map>
#include <string>
#include <vector>

#include "devhost/project/DriverNames.h"
#include "devhost/script/Script.h"

namespace devhost {

struct ScriptLine;

// One form of an action. The parser and its messages, help, manual and the dictionary of the fuzzer are made of these.
struct ActionForm {
  const char* synopsis;  // as ScriptForm reads it; SUBJECT stands for the form of each subject
  const char* meaning;   // a phrase for help
  const char* details;   // sentences for the manual, or ""
  // Makes the action of a line that has this form. Throws std::runtime_error for a word that means nothing.
  Action (*make)(const ScriptLine& line, const char* argument);
  const char* argument = nullptr;
};

// One form of what an expectation can be about; the texts are as in ActionForm.
struct SubjectForm {
  const char* synopsis;
  const char* meaning;
  const char* details;
  ExpectAction::Subject subject;
};

// The whole language, in the order in which help shows it.
const std::vector<ActionForm>& ActionForms();
const std::vector<SubjectForm>& SubjectForms();

// Makes an action of the words of one line, of which there is at least one. Paths are relative to `folder`. Throws
// std::runtime_error, which says what is wrong and what is allowed, without the place.
Action ParseAction(const std::vector<std::string>& words, const std::string& folder, const DriverNames& names);

// What a line can name beside the words of the language, for completion.
struct KnownNames {
  std::map<unsigned long, std::string> drivers;              // by id
  std::map<std::string, std::vector<std::string>> commands;  // that drivers have registered, by the driver's name
};

// The words that can stand where a line ends: those of the language, drivers by name (and by id, behind a digit), commands,
// and deviceId=ID for a command, as far as they begin with what the line has of the last word. In alphabetical order; none
// where anything can stand.
std::vector<std::string> NextWords(const std::string& line, const KnownNames& known);

}  // namespace devhost

#endif

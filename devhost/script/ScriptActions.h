#ifndef DEVHOST_SCRIPT_SCRIPT_ACTIONS_H
#define DEVHOST_SCRIPT_SCRIPT_ACTIONS_H

#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/script/Script.h"
#include "devhost/script/ScriptReader.h"

namespace devhost {

// One form of an action, as help and messages show it.
struct ActionForm {
  const char* synopsis;
  const char* meaning;
};

// Every form of every action, in the order in which help shows them.
const std::vector<ActionForm>& ActionForms();

// A line that is no action; the text says what is wrong and what is allowed, without the place.
class ActionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Makes an action of the words of one line, of which there is at least one. Paths are taken to be relative to `folder`.
// Throws ActionError.
Action ParseAction(const std::vector<std::string>& words, const std::string& folder, const DriverNames& names);

}  // namespace devhost

#endif

#ifndef DEVHOST_SCRIPT_SCRIPT_VARIABLES_H
#define DEVHOST_SCRIPT_SCRIPT_VARIABLES_H

#include <string>
#include <vector>

#include "devhost/script/Script.h"

namespace devhost {

// The actions about the project's variables and items, each from the words of its line. All throw ActionError.

// `variable add|remove ...` and `user-variable add|remove ...`.
Action ParseVariable(const std::vector<std::string>& words);
// `item remove ITEM [ROOM]`.
Action ParseItem(const std::vector<std::string>& words);
// `flag DEVICE ID true|false`.
Action ParseFlag(const std::vector<std::string>& words);

// An id; `what` names it in the message.
unsigned long ParseId(const std::string& word, const char* what);

}  // namespace devhost

#endif

#ifndef DEVHOST_SCRIPT_SCRIPT_H
#define DEVHOST_SCRIPT_SCRIPT_H

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "devhost/driver/VariableEntry.h"
#include "devhost/report/ScriptOccurrence.h"

namespace devhost {

// The text of a script and where it came from.
struct Script {
  std::string name;    // for messages: the path as it was given, or "standard input"
  std::string folder;  // what paths in the script are relative to
  std::string text;
};

// Reads a script's text: a file, or standard input for "-". Throws FileError.
Script LoadScript(const std::string& path);

// A parameter of a command or event. A file's text is read when the action runs, not before.
struct ScriptParameter {
  std::string name;
  std::string value;  // the value itself, or the path of the file that holds it
  bool isFile = false;
};

// A command of the tool to a driver, or to the one that has registered it. What the script writes as `device DRIVER set ...`
// and so on is such a command too, but one that must succeed.
struct CommandAction {
  std::optional<unsigned long> driverId;
  std::string name;
  std::vector<ScriptParameter> parameters;
  bool mustSucceed = false;  // a reply <Fail> is a failed action
};

struct EventAction {
  std::string name;
  std::vector<ScriptParameter> parameters;
};

// A variable comes or goes; of one that goes, only the ids and the kind are set.
struct VariableAction {
  bool add = false;
  VariableEntry variable;
};

struct RemoveItemAction {
  unsigned long itemId = 0;
  unsigned long roomId = 0;
};

struct FlagAction {
  unsigned long deviceId = 0;
  unsigned long variableId = 0;
  bool enabled = false;
};

struct LoadProjectAction {};

struct ShowAction {
  ScriptOccurrence::Kind what = ScriptOccurrence::Kind::File;  // or Settings, Counts, Daemon, State, Variables
  unsigned long driverId = 0;                                  // not for Variables
};

struct RestartAction {};

// A program of the script's own, run to its end. In a word, {address:DRIVER} stands for the address of a device's daemon.
struct RunAction {
  std::vector<std::string> words;
  std::string folder;
};

struct PrintAction {
  std::string text;
};

struct ExpectAction {
  enum class Subject { Reply, Notification, Log, Setting, File, Flag, State, Output };
  enum class Comparison { Is, Matches, Golden, None };
  Subject subject = Subject::Reply;
  unsigned long driverId = 0;  // of a setting, file or state; of a flag, the variable's device
  unsigned long variableId = 0;
  std::string setting;  // its name
  Comparison comparison = Comparison::Is;
  std::string text;  // the text, the pattern, or the path of the golden file; nothing for None
};

using Action = std::variant<CommandAction, EventAction, VariableAction, RemoveItemAction, FlagAction, LoadProjectAction,
                            ShowAction, RestartAction, RunAction, PrintAction, ExpectAction>;

}  // namespace devhost

#endif

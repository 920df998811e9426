#include "devhost/script/ScriptActions.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>

#include "devhost/driver/EventListeners.h"
#include "devhost/script/ScriptPrograms.h"
#include "devhost/script/ScriptVariables.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Pattern.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Words = std::vector<std::string>;

constexpr char kActions[] =
    "command, event, device, variable, user-variable, item, flag, load-project, show, restart, run, print, expect";

// A device action is a command that every device driver has registered, with the words of the line as its parameters.
struct DeviceVerb {
  const char* word;
  const char* command;
  std::vector<const char*> parameters;
  std::size_t optional;  // how many of the last parameters may be missing
  const char* synopsis;
};

const std::vector<DeviceVerb>& DeviceVerbs() {
  static const std::vector<DeviceVerb> kVerbs = {
      {"announce", "Announce", {}, 0, "device DRIVER announce"},
      {"withdraw", "Withdraw", {}, 0, "device DRIVER withdraw"},
      {"set", "SetSetting", {"name", "value"}, 0, "device DRIVER set NAME VALUE"},
      {"erase", "EraseSetting", {"name"}, 0, "device DRIVER erase NAME"},
      {"add-trap", "AddTrapTarget", {"target", "community", "port"}, 0, "device DRIVER add-trap TARGET COMMUNITY PORT"},
      {"clear-traps", "ClearTrapTargets", {}, 0, "device DRIVER clear-traps"},
      {"fail", "FailOperation", {"operation", "status", "times"}, 1, "device DRIVER fail OPERATION STATUS [TIMES]"}};
  return kVerbs;
}

// What goes wrong, and in which form the line is allowed.
[[noreturn]] void Refuse(const std::string& problem, const std::string& allowed) {
  throw ActionError(problem + "; allowed: " + allowed);
}

unsigned long FindDriver(const std::string& word, const DriverNames& names) {
  try {
    return names.Find(word);
  } catch (const std::runtime_error& error) {
    throw ActionError(error.what());
  }
}

std::string ReadablePath(const std::string& folder, const std::string& file,
                         std::string (*whyNot)(const std::string& path)) {
  const std::string path = PathIn(folder, file);
  const std::string reason = whyNot(path);
  if (!reason.empty()) {
    throw ActionError("cannot read " + Quoted(path) + ": " + reason);
  }
  return path;
}

ScriptParameter ParseParameter(const std::string& word, const std::string& folder) {
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos) {
    // As a whole or not at all: it may be a part of a secret with blanks.
    const std::string name = word.size() <= 60 ? OneLine(word) : "NAME";
    throw ActionError("the parameter " + Quoted(word) + " has no value: write " + name + "=VALUE, or " + name +
                      "= for an empty one");
  }
  if (equals == 0) {
    throw ActionError("the parameter " + Quoted(word) + " has no name: write NAME=VALUE");
  }
  ScriptParameter parameter{word.substr(0, equals), word.substr(equals + 1), false};
  if (parameter.value.compare(0, 2, "@@") == 0) {
    parameter.value.erase(0, 1);
  } else if (!parameter.value.empty() && parameter.value.front() == '@') {
    parameter.value = ReadablePath(folder, parameter.value.substr(1), WhyUnreadable);
    parameter.isFile = true;
  }
  return parameter;
}

std::vector<ScriptParameter> ParseParameters(const Words& words, std::size_t first, const std::string& folder) {
  std::vector<ScriptParameter> parameters;
  parameters.reserve(words.size() - first);
  for (std::size_t i = first; i < words.size(); ++i) {
    parameters.push_back(ParseParameter(words[i], folder));
  }
  return parameters;
}

void RefuseDoubleNames(const std::vector<ScriptParameter>& parameters) {
  Words names;
  names.reserve(parameters.size());
  for (const ScriptParameter& parameter : parameters) {
    names.push_back(parameter.name);
  }
  std::sort(names.begin(), names.end());
  const auto twin = std::adjacent_find(names.begin(), names.end());
  if (twin != names.end()) {
    throw ActionError("the parameter " + Quoted(*twin) + " is given twice: a command takes each one once");
  }
}

Action ParseCommand(const Words& words, const std::string& folder, const DriverNames& names) {
  constexpr char kForm[] = "command [to DRIVER] NAME [PARAM=VALUE|PARAM=@FILE]...";
  CommandAction action;
  std::size_t next = 1;
  if (words.size() > 1 && words[1] == "to") {
    if (words.size() < 4) {
      Refuse(words.size() == 2 ? "\"command to\" names no driver" : "the command has no name", kForm);
    }
    action.driverId = FindDriver(words[2], names);
    next = 3;
  }
  if (next == words.size() || words[next].empty() || words[next].find('=') != std::string::npos) {
    Refuse("the command has no name", kForm);
  }
  action.name = words[next];
  action.parameters = ParseParameters(words, next + 1, folder);
  RefuseDoubleNames(action.parameters);
  return action;
}

Action ParseEvent(const Words& words, const std::string& folder) {
  if (words.size() < 2 || words[1].empty() || words[1].find('=') != std::string::npos) {
    Refuse("the event has no name", "event NAME [PARAM=VALUE|PARAM=@FILE]...");
  }
  if (SystemEventIdOf(words[1]) == 0) {
    Refuse("there is no system event " + Quoted(words[1]), SystemEventNames());
  }
  return EventAction{words[1], ParseParameters(words, 2, folder)};
}

void CheckInteger(const std::string& word, const char* name, bool positive) {
  int value = 0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, value);
  if (error != std::errc() || stop != end || (positive && value < 1)) {
    using Range = std::numeric_limits<int>;
    Refuse(std::string(name) + " is " + Quoted(word), "a whole number from " + std::to_string(positive ? 1 : Range::min()) +
                                                          " to " + std::to_string(Range::max()) +
                                                          (positive ? ", or none for every time" : ", 0 for success"));
  }
}

Action ParseShow(const Words& words, unsigned long driverId) {
  constexpr char kForm[] = "device DRIVER show file|settings|counts|daemon";
  const std::string what = words.size() == 4 ? words[3] : std::string();
  if (what == "file") {
    return ShowAction{driverId, ShowAction::What::File};
  }
  if (what == "settings") {
    return ShowAction{driverId, ShowAction::What::Settings};
  }
  if (what == "counts") {
    return ShowAction{driverId, ShowAction::What::Counts};
  }
  if (what == "daemon") {
    return ShowAction{driverId, ShowAction::What::Daemon};
  }
  Refuse(words.size() == 4 ? Quoted(what) + " cannot be shown" : "\"show\" takes one word", kForm);
}

Action ParseDeviceVerb(const Words& words, unsigned long driverId, const DeviceVerb& verb) {
  const std::size_t given = words.size() - 3;
  if (given > verb.parameters.size() || given + verb.optional < verb.parameters.size()) {
    Refuse(Quoted(words[2]) + " has " + std::to_string(given) + (given == 1 ? " word" : " words") + " after it",
           verb.synopsis);
  }
  CommandAction action;
  action.driverId = driverId;
  action.name = verb.command;
  action.mustSucceed = true;
  for (std::size_t i = 0; i != given; ++i) {
    action.parameters.push_back({verb.parameters[i], words[i + 3], false});
  }
  if (words[2] == "fail") {
    CheckInteger(words[4], "the status", false);
    if (given == 3) {
      CheckInteger(words[5], "the number of times", true);
    }
  }
  return action;
}

Action ParseOnline(const Words& words, unsigned long driverId) {
  if (words.size() != 3) {
    Refuse(Quoted(words[2]) + " is followed by " + Quoted(words[3]), "device DRIVER online, device DRIVER offline");
  }
  CommandAction action;
  action.driverId = driverId;
  action.name = "SetOnline";
  action.mustSucceed = true;
  action.parameters.push_back({"online", words[2] == "online" ? "true" : "false", false});
  return action;
}

Action ParseDevice(const Words& words, const DriverNames& names) {
  if (words.size() < 3) {
    Refuse(words.size() == 1 ? "\"device\" names no driver" : "nothing is said about what the device shall do",
           "device DRIVER announce|withdraw|set|erase|add-trap|clear-traps|fail|online|offline|show ...");
  }
  const unsigned long driverId = FindDriver(words[1], names);
  if (words[2] == "show") {
    return ParseShow(words, driverId);
  }
  if (words[2] == "online" || words[2] == "offline") {
    return ParseOnline(words, driverId);
  }
  for (const DeviceVerb& verb : DeviceVerbs()) {
    if (words[2] == verb.word) {
      return ParseDeviceVerb(words, driverId, verb);
    }
  }
  Refuse("a device cannot " + Quoted(words[2]),
         "announce, withdraw, set, erase, add-trap, clear-traps, fail, online, offline, show");
}

Action ParseShow(const Words& words, const DriverNames& names) {
  constexpr char kForm[] = "show variables, show state DRIVER";
  const std::string what = words.size() > 1 ? words[1] : std::string();
  if (what == "variables" && words.size() == 2) {
    return ShowAction{0, ShowAction::What::Variables};
  }
  if (what == "state" && words.size() == 3) {
    return ShowAction{FindDriver(words[2], names), ShowAction::What::State};
  }
  Refuse(what.empty()                             ? "nothing is said about what to show"
         : what == "variables" || what == "state" ? "\"show " + what + "\" has another form"
                                                  : Quoted(what) + " cannot be shown",
         kForm);
}

// An action of one word.
template <class Alone>
Action ParseAlone(const Words& words) {
  if (words.size() > 1) {
    Refuse(Quoted(words[0]) + " is followed by " + Quoted(words[1]), words[0]);
  }
  return Alone{};
}

constexpr char kSubjects[] =
    "reply, notification, log, output, setting DRIVER NAME, file DRIVER, flag DEVICE ID, state DRIVER, no notification, no "
    "log";

// Reads what an expectation is about; returns the number of words that it took.
std::size_t ParseSubject(const Words& words, const DriverNames& names, ExpectAction& action) {
  const std::string subject = words.size() > 1 ? words[1] : std::string();
  const std::size_t wanted = subject == "setting" || subject == "flag" ? 4 : subject == "file" || subject == "state" ? 3 : 2;
  if (words.size() < wanted) {
    Refuse(subject.empty() ? "nothing is said about what to expect" : "something is missing after " + Quoted(words.back()),
           kSubjects);
  }
  if (subject == "reply") {
    action.subject = ExpectAction::Subject::Reply;
  } else if (subject == "notification") {
    action.subject = ExpectAction::Subject::Notification;
  } else if (subject == "log") {
    action.subject = ExpectAction::Subject::Log;
  } else if (subject == "output") {
    action.subject = ExpectAction::Subject::Output;
  } else if (subject == "setting" || subject == "file") {
    action.subject = subject == "file" ? ExpectAction::Subject::File : ExpectAction::Subject::Setting;
    action.driverId = FindDriver(words[2], names);
    action.setting = subject == "file" ? std::string() : words[3];
  } else if (subject == "flag") {
    action.subject = ExpectAction::Subject::Flag;
    action.driverId = ParseId(words[2], "device");
    action.variableId = ParseId(words[3], "variable's id");
  } else if (subject == "state") {
    action.subject = ExpectAction::Subject::State;
    action.driverId = FindDriver(words[2], names);
  } else {
    Refuse(Quoted(subject) + " cannot be expected", kSubjects);
  }
  return wanted;
}

Action ParseExpectNone(const Words& words) {
  ExpectAction action;
  action.comparison = ExpectAction::Comparison::None;
  if (words.size() != 3 || (words[2] != "notification" && words[2] != "log")) {
    Refuse("\"expect no\" is followed by " + (words.size() > 2 ? Quoted(words[2]) : std::string("nothing")),
           "expect no notification, expect no log");
  }
  action.subject = words[2] == "log" ? ExpectAction::Subject::Log : ExpectAction::Subject::Notification;
  return action;
}

Action ParseExpect(const Words& words, const std::string& folder, const DriverNames& names) {
  if (words.size() > 1 && words[1] == "no") {
    return ParseExpectNone(words);
  }
  ExpectAction action;
  const std::size_t next = ParseSubject(words, names, action);
  if (words.size() != next + 2) {
    Refuse(words.size() < next + 2 ? "the expectation is not finished"
                                   : "the expectation has " + std::to_string(words.size() - next - 2) +
                                         " more words than it can have (a text with blanks stands in quotes)",
           "expect ... is TEXT, expect ... matches REGEX, expect ... golden FILE");
  }
  const std::string& comparison = words[next];
  action.text = words[next + 1];
  if (comparison == "is") {
    action.comparison = ExpectAction::Comparison::Is;
  } else if (comparison == "matches") {
    action.comparison = ExpectAction::Comparison::Matches;
    try {
      const Pattern pattern(action.text);
    } catch (const PatternError& error) {
      throw ActionError(error.what());
    }
  } else if (comparison == "golden") {
    action.comparison = ExpectAction::Comparison::Golden;
    action.text = ReadablePath(folder, action.text, WhyNoRegularFile);
  } else {
    Refuse("an expectation cannot compare with " + Quoted(comparison), "is, matches, golden");
  }
  return action;
}

Action ParsePrint(const Words& words) {
  PrintAction action;
  for (std::size_t i = 1; i < words.size(); ++i) {
    action.text += (i == 1 ? "" : " ") + words[i];
  }
  return action;
}

}  // namespace

const std::vector<ActionForm>& ActionForms() {
  static const std::vector<ActionForm> kForms = {
      {"command [to DRIVER] NAME [PARAM=VALUE]...", "send a command of the tool; PARAM=@FILE takes a file's text"},
      {"event NAME [PARAM=VALUE]...", "send a system event to the drivers that listen"},
      {"device DRIVER announce", "the device announces itself to the agent"},
      {"device DRIVER withdraw", "the device withdraws from the agent"},
      {"device DRIVER set NAME VALUE", "set one of the device's settings"},
      {"device DRIVER erase NAME", "empty a setting and note that it was erased"},
      {"device DRIVER add-trap TARGET COMMUNITY PORT", "add a trap destination"},
      {"device DRIVER clear-traps", "remove all trap destinations"},
      {"device DRIVER fail OPERATION STATUS [TIMES]", "let an operation fail with a status; status 0 ends it"},
      {"device DRIVER online", "the device can be reached: what it was given meanwhile goes in"},
      {"device DRIVER offline", "the device cannot be reached for a while"},
      {"device DRIVER show file|settings|counts", "print the device's snmpd.conf, settings or calls"},
      {"device DRIVER show daemon", "print whether the device's SNMP daemon runs, and where"},
      {"variable add DEVICE ID NAME [hidden] [trap]", "add a variable to the project"},
      {"variable remove DEVICE ID", "remove a variable"},
      {"user-variable add DEVICE ID NAME [hidden] [trap]", "add a user variable"},
      {"user-variable remove DEVICE ID", "remove a user variable"},
      {"item remove ITEM [ROOM]", "remove an item with its variables"},
      {"flag DEVICE ID true|false", "set a variable's trap-enabled flag as a user would"},
      {"load-project", "tell the drivers that the project has loaded"},
      {"show variables", "print the project's variables and flags"},
      {"show state DRIVER", "print the state that the driver would keep now"},
      {"restart", "stop the host and start it again"},
      {"run PROGRAM [WORD]...", "run a program; {address:DRIVER} in a word is a daemon's address"},
      {"print [TEXT]...", "print a line"},
      {"expect SUBJECT is TEXT", "SUBJECT is exactly this text"},
      {"expect SUBJECT matches REGEX", "SUBJECT holds a match (extended regular expression)"},
      {"expect SUBJECT golden FILE", "SUBJECT is the text of that file"},
      {"expect no notification|log", "there was none since the last other action"}};
  return kForms;
}

Action ParseAction(const std::vector<std::string>& words, const std::string& folder, const DriverNames& names) {
  const std::string& action = words.front();
  if (action == "command") {
    return ParseCommand(words, folder, names);
  }
  if (action == "event") {
    return ParseEvent(words, folder);
  }
  if (action == "device") {
    return ParseDevice(words, names);
  }
  if (action == "variable" || action == "user-variable") {
    return ParseVariable(words);
  }
  if (action == "item") {
    return ParseItem(words);
  }
  if (action == "flag") {
    return ParseFlag(words);
  }
  if (action == "load-project") {
    return ParseAlone<LoadProjectAction>(words);
  }
  if (action == "show") {
    return ParseShow(words, names);
  }
  if (action == "restart") {
    return ParseAlone<RestartAction>(words);
  }
  if (action == "run") {
    return ParseRun(words, folder, names);
  }
  if (action == "print") {
    return ParsePrint(words);
  }
  if (action == "expect") {
    return ParseExpect(words, folder, names);
  }
  Refuse("unknown action " + Quoted(action), kActions);
}

}  // namespace devhost

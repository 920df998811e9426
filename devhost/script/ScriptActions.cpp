#include "devhost/script/ScriptActions.h"

#include <algorithm>
#include <boost/algorithm/string/split.hpp>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "devhost/driver/EventListeners.h"
#include "devhost/script/ScriptForm.h"
#include "devhost/script/ScriptLine.h"
#include "devhost/script/ScriptPrograms.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Pattern.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Subject = ExpectAction::Subject;
using Comparison = ExpectAction::Comparison;

void RefuseDoubleNames(const std::vector<ScriptParameter>& parameters) {
  std::vector<std::string> names;
  names.reserve(parameters.size());
  for (const ScriptParameter& parameter : parameters) {
    names.push_back(parameter.name);
  }
  std::sort(names.begin(), names.end());
  const auto twin = std::adjacent_find(names.begin(), names.end());
  if (twin != names.end()) {
    throw std::runtime_error(ParameterTitle(*twin) + " is given twice: a command takes each one once");
  }
}

Action MakeCommand(const ScriptLine& line, const char*) {
  CommandAction action;
  action.name = line.Name();
  if (line.Has("DRIVER")) {
    action.driverId = line.Driver();
  }
  action.parameters = line.Parameters();
  RefuseDoubleNames(action.parameters);
  return action;
}

Action MakeEvent(const ScriptLine& line, const char*) {
  const std::string& name = line.Name();
  if (SystemEventIdOf(name) == 0) {
    throw std::runtime_error("there is no such system event; allowed: " + SystemEventNames());
  }
  return EventAction{name, line.Parameters()};
}

// A command that every device driver has registered. Its parameters are called as the form calls the words.
Action MakeDevice(const ScriptLine& line, const char* command) {
  CommandAction action{line.Driver(), command, {}, true};
  for (std::size_t i = 3; i < line.words.size(); ++i) {
    std::string name = line.form.Place(i);
    std::transform(name.begin(), name.end(), name.begin(), [](char c) { return static_cast<char>(c - 'A' + 'a'); });
    action.parameters.push_back({name, line.words[i], false});
  }
  return action;
}

Action MakeFail(const ScriptLine& line, const char* command) {
  using Range = std::numeric_limits<int>;
  line.Number("STATUS", Range::min(), Range::max(), ", 0 for success");
  if (line.Has("TIMES")) {
    line.Number("TIMES", 1, Range::max(), ", or none for every time");
  }
  return MakeDevice(line, command);
}

Action MakeOnline(const ScriptLine& line, const char* online) {
  return CommandAction{line.Driver(), "SetOnline", {{"online", online, false}}, true};
}

Action MakeShow(const ScriptLine& line, const char*) {
  using Kind = ScriptOccurrence::Kind;
  static const std::map<std::string, Kind> kKinds = {{"file", Kind::File},           {"settings", Kind::Settings},
                                                     {"counts", Kind::Counts},       {"daemon", Kind::Daemon},
                                                     {"variables", Kind::Variables}, {"state", Kind::State}};
  return ShowAction{kKinds.at(line.words[line.words[0] == "show" ? 1 : 3]), line.Has("DRIVER") ? line.Driver() : 0};
}

Action MakeItem(const ScriptLine& line, const char*) {
  return RemoveItemAction{line.Id("ITEM"), line.Has("ROOM") ? line.Id("ROOM") : 0};
}

Action MakeFlag(const ScriptLine& line, const char*) {
  return FlagAction{line.Id("DEVICE"), line.Id("ID"), line["true|false"] == "true"};
}

template <class Alone>
Action MakeAlone(const ScriptLine&, const char*) {
  return Alone{};
}

Action MakeVariable(const ScriptLine& line, const char*) {
  VariableAction action;
  action.add = line.Has("NAME");
  action.variable = {line.Id("DEVICE"), line.Id("ID"), action.add ? line["NAME"] : "", line.words[0] == "user-variable"};
  if (action.add && action.variable.name.empty()) {
    throw std::runtime_error(std::string("NAME is empty; allowed: ") + line.form.Action().synopsis);
  }
  for (const std::string& option : line.From("hidden|trap")) {
    (option == "hidden" ? action.variable.hidden : action.variable.trapEnabled) = true;
  }
  return action;
}

Action MakeRun(const ScriptLine& line, const char*) {
  RunAction action{line.From("PROGRAM"), line.folder == "." ? std::string() : line.folder};
  CheckProgram(action.words.front(), line.folder);
  for (const std::string& word : action.words) {
    WithAddresses(word, [&line](const std::string& driver) { return line.names.Find(driver), std::string(); });
  }
  return action;
}

Action MakePrint(const ScriptLine& line, const char*) {
  PrintAction action;
  for (const std::string& word : line.From("TEXT")) {
    action.text += (action.text.empty() ? "" : " ") + word;
  }
  return action;
}

Action MakeExpect(const ScriptLine& line, const char*) {
  ExpectAction action;
  const auto isIt = [&line](const SubjectForm& form) { return SplitWords(form.synopsis).front() == line.words[1]; };
  action.subject = std::find_if(SubjectForms().begin(), SubjectForms().end(), isIt)->subject;
  if (line.Has("DRIVER")) {
    action.driverId = line.Driver();
  } else if (line.Has("DEVICE")) {
    action.driverId = line.Id("DEVICE");
    action.variableId = line.Id("ID");
  }
  action.setting = line.Has("NAME") ? line["NAME"] : "";
  action.text = line.words.back();
  if (line.Has("REGEX")) {
    const Pattern pattern(action.text);
    action.comparison = Comparison::Matches;
  } else if (line.Has("FILE")) {
    action.text = line.Path(action.text, WhyNoRegularFile);
    action.comparison = Comparison::Golden;
  }
  return action;
}

Action MakeNone(const ScriptLine& line, const char*) {
  ExpectAction action;
  action.subject = line.words.back() == "log" ? Subject::Log : Subject::Notification;
  action.comparison = Comparison::None;
  return action;
}

// The forms that a line can have: those of the actions, with the form of each subject in the place of SUBJECT.
std::vector<ScriptForm> FormsOfLines() {
  constexpr std::string_view kSubject = "SUBJECT";
  std::vector<ScriptForm> forms;
  for (const ActionForm& action : ActionForms()) {
    const std::string synopsis = action.synopsis;
    const std::size_t at = synopsis.find(kSubject);
    if (at == std::string::npos) {
      forms.emplace_back(synopsis, action);
      continue;
    }
    for (const SubjectForm& subject : SubjectForms()) {
      forms.emplace_back(std::string(synopsis).replace(at, kSubject.size(), subject.synopsis), action);
    }
  }
  return forms;
}

}  // namespace

const std::vector<ActionForm>& ActionForms() {
  static const std::vector<ActionForm> kForms = {
      {"command NAME [PARAM=VALUE]...", "send a command of the tool to the driver that has registered it", "", MakeCommand},
      {"command to DRIVER NAME [PARAM=VALUE]...", "send a command of the tool to that driver", "", MakeCommand},
      {"event NAME [PARAM=VALUE]...", "send a system event to the drivers that listen",
       "A parameter may stand several times.", MakeEvent},
      {"device DRIVER announce", "the device announces itself to the agent", "", MakeDevice, "Announce"},
      {"device DRIVER withdraw", "the device withdraws from the agent", "", MakeDevice, "Withdraw"},
      {"device DRIVER set NAME VALUE", "set one of the device's settings", "", MakeDevice, "SetSetting"},
      {"device DRIVER erase NAME", "empty a setting and note that it was erased", "", MakeDevice, "EraseSetting"},
      {"device DRIVER add-trap TARGET COMMUNITY PORT", "add a trap destination", "", MakeDevice, "AddTrapTarget"},
      {"device DRIVER clear-traps", "remove all trap destinations", "", MakeDevice, "ClearTrapTargets"},
      {"device DRIVER fail OPERATION STATUS [TIMES]", "let an operation fail with a status; status 0 ends it",
       "OPERATION is CopyFrom, CopyTo, RebootController, StopMasterAgent or StartMasterAgent. Without TIMES it fails until "
       "told otherwise.",
       MakeFail, "FailOperation"},
      {"device DRIVER online", "the device can be reached: what it was given meanwhile goes in", "", MakeOnline, "true"},
      {"device DRIVER offline", "the device cannot be reached for a while", "What it is given meanwhile waits.", MakeOnline,
       "false"},
      {"device DRIVER show file|settings|counts|daemon", "print the device's snmpd.conf, settings, calls or SNMP daemon",
       "The counts say how often each operation was called. The line of the daemon says whether it runs, its process and "
       "its "
       "address.",
       MakeShow},
      {"variable add DEVICE ID NAME [hidden] [trap]", "add a variable to the project",
       "This sends OnVariableAdded. The word hidden lists it as hidden, the word trap sets its trap-enabled flag.",
       MakeVariable},
      {"variable remove DEVICE ID", "remove a variable", "This sends OnVariableRemoved.", MakeVariable},
      {"user-variable add DEVICE ID NAME [hidden] [trap]", "add a user variable", "This sends OnUserVariableAdded.",
       MakeVariable},
      {"user-variable remove DEVICE ID", "remove a user variable", "This sends OnVariableRemoved.", MakeVariable},
      {"item remove ITEM [ROOM]", "remove an item with its variables",
       "This sends OnItemRemoved. The room is 0 when it is missing.", MakeItem},
      {"flag DEVICE ID true|false", "set a variable's trap-enabled flag as a user would", "The drivers are not told.",
       MakeFlag},
      {"load-project", "tell the drivers that the project has loaded", "This sends OnProjectLoaded.",
       MakeAlone<LoadProjectAction>},
      {"show variables", "print the project's variables and flags", "", MakeShow},
      {"show state DRIVER", "print the state that the driver would keep now", "", MakeShow},
      {"restart", "stop the host and start it again",
       "The project is the same, with what the script has made of its variables. Every variable has the flag again that it "
       "began with.",
       MakeAlone<RestartAction>},
      {"run PROGRAM [WORD]...", "run a program; {address:DRIVER} in a word is a daemon's address",
       "It runs in the folder of the script, for 60 seconds at most. What it writes is printed. A status other than 0 is a "
       "failed action.",
       MakeRun},
      {"print [TEXT]...", "print a line", "", MakePrint},
      {"expect SUBJECT is TEXT", "SUBJECT is exactly this text", "", MakeExpect},
      {"expect SUBJECT matches REGEX", "SUBJECT holds a match (extended regular expression)", "", MakeExpect},
      {"expect SUBJECT golden FILE", "SUBJECT is the text of that file",
       "In the file, {time} stands for the time at which a managed section was generated.", MakeExpect},
      {"expect no notification|log", "there was none since the last other action",
       "Actions that expect, print or show something do not count.", MakeNone}};
  return kForms;
}

const std::vector<SubjectForm>& SubjectForms() {
  static const std::vector<SubjectForm> kForms = {
      {"reply", "the last reply", "", Subject::Reply},
      {"notification", "the last notification", "", Subject::Notification},
      {"log", "the text of the last log line", "", Subject::Log},
      {"output", "what the last program wrote", "Its last line feed counts for golden only.", Subject::Output},
      {"setting DRIVER NAME", "one of the device's settings", "", Subject::Setting},
      {"file DRIVER", "the device's snmpd.conf", "", Subject::File},
      {"flag DEVICE ID", "the trap-enabled flag of a variable, true or false", "", Subject::Flag},
      {"state DRIVER", "the state that the driver would keep now",
       "It stands on one line; for golden it is laid out as in a state folder.", Subject::State}};
  return kForms;
}

namespace {

const std::vector<ScriptForm>& LineForms() {
  static const std::vector<ScriptForm> forms = FormsOfLines();
  return forms;
}

using Texts = std::vector<std::string>;

Texts OfferedDrivers(const KnownNames& known, bool isId) {
  Texts words;
  for (const auto& [id, name] : known.drivers) {
    words.push_back(isId ? std::to_string(id) : name);
  }
  return words;
}

// The commands of the driver that the line names, or of all.
Texts OfferedCommands(const Texts& before, const KnownNames& known) {
  const bool isTo = before.size() > 2;
  Texts words;
  for (const auto& [id, name] : known.drivers) {
    const auto commands = known.commands.find(name);
    if (commands != known.commands.end() && (!isTo || before[2] == name || before[2] == std::to_string(id))) {
      words.insert(words.end(), commands->second.begin(), commands->second.end());
    }
  }
  return words;
}

// What a place of a form offers behind the words `before`, for a word that begins with `begin`.
Texts Offered(const std::string& place, const Texts& before, const std::string& begin, const KnownNames& known) {
  const bool isCommand = !before.empty() && before.front() == "command";
  if (place == "DRIVER") {
    return OfferedDrivers(known, !begin.empty() && begin.front() >= '0' && begin.front() <= '9');
  }
  if (isCommand && place == "NAME") {
    return OfferedCommands(before, known);
  }
  Texts words;
  if (isCommand && place == "PARAM=VALUE" && before[1] != "to") {
    for (const auto& driver : known.drivers) {
      words.push_back("deviceId=" + std::to_string(driver.first));
    }
  } else if (!place.empty() && place.front() >= 'a' && place.front() <= 'z') {
    boost::split(words, place, [](char byte) { return byte == '|'; });
  }
  return words;
}

}  // namespace

Action ParseAction(const std::vector<std::string>& words, const std::string& folder, const DriverNames& names) {
  const ScriptForm& form = FindForm(LineForms(), words);
  return form.Action().make({words, form, folder, names}, form.Action().argument);
}

std::vector<std::string> NextWords(const std::string& line, const KnownNames& known) {
  const std::size_t begin = line.find_last_of(" \t") + 1;  // 0 when there is none
  const std::string last = line.substr(begin);
  std::set<std::string> next;
  try {
    const std::vector<std::string> before = SplitWords(std::string_view(line).substr(0, begin));
    for (const ScriptForm& form : LineForms()) {
      if (form.Fit(before).first != before.size()) {
        continue;
      }
      for (std::string& word : Offered(form.Place(before.size()), before, last, known)) {
        if (StartsWith(word, last)) {
          next.insert(std::move(word));
        }
      }
    }
  } catch (const WordError&) {
    // The line ends in quotes, where anything can stand.
  }
  return {next.begin(), next.end()};
}

}  // namespace devhost

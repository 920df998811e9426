#include "devhost/script/ScriptRunner.h"

#include <fcntl.h>

#include <algorithm>
#include <utility>

#include "devhost/script/DeviceReplies.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Difference.h"
#include "devhost/text/Pattern.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// What a golden file writes where the managed section carries the time at which it was generated.
constexpr char kTimePlaceholder[] = "{time}";
constexpr char kTimePattern[] = "[A-Z][a-z]+day, [A-Z][a-z]+, [0-9]{2} [0-9]{4} at [0-9]{2}:[0-9]{2}:[0-9]{2}";

Parameters ReadParameters(const std::vector<ScriptParameter>& given) {
  Parameters parameters;
  parameters.reserve(given.size());
  for (const ScriptParameter& parameter : given) {
    parameters.emplace_back(parameter.name, parameter.isFile ? ReadFileText(parameter.value) : parameter.value);
  }
  return parameters;
}

// A command's parameters as the script has them: a file's text can be long and is not what one wants to see here.
Parameters ShownParameters(const CommandAction& action, const Masker& secrets) {
  Parameters shown;
  for (const ScriptParameter& parameter : action.parameters) {
    const bool marked = parameter.isFile || parameter.value.compare(0, 1, "@") == 0;
    shown.emplace_back(parameter.name, (marked ? "@" : "") + parameter.value);
  }
  return secrets.CommandParameters(shown);
}

// The start of a text that may be a whole file.
std::string Beginning(const std::string& text) {
  constexpr std::size_t kLongest = 400;
  if (text.empty()) {
    return "(empty)";
  }
  return text.size() <= kLongest ? text : text.substr(0, kLongest) + "... (" + std::to_string(text.size()) + " bytes)";
}

// What an expectation is about, for messages.
std::string Subject(const ExpectAction& action, const DriverNames& names) {
  switch (action.subject) {
    case ExpectAction::Subject::Reply:
      return "the reply";
    case ExpectAction::Subject::Notification:
      return "the notification";
    case ExpectAction::Subject::Log:
      return "the log line";
    case ExpectAction::Subject::Setting:
      return "the setting " + Quoted(action.setting) + " of " + names.Name(action.driverId);
    case ExpectAction::Subject::Flag:
      return "the flag of variable " + std::to_string(action.variableId) + " of device " + std::to_string(action.driverId);
    case ExpectAction::Subject::State:
      return "the state of " + names.Name(action.driverId);
    case ExpectAction::Subject::Output:
      return "the output";
    case ExpectAction::Subject::File:
      break;
  }
  return "the file of " + names.Name(action.driverId);
}

}  // namespace

ScriptRunner::ScriptRunner(const Project& project, const DriverNames& names, StateStore& states, Printer& printer)
    : m_project(project), m_names(names), m_states(states), m_printer(printer), m_where("at the start") {
  for (const DriverEntry& driver : project.drivers) {
    m_printer.Secrets().LearnFromXml(driver.configXml);
  }
}

ScriptRunner::~ScriptRunner() = default;

void ScriptRunner::Start(const std::vector<VariableEntry>& variables) {
  HostObserver& observer = *this;
  m_host = std::make_unique<Host>(observer, &m_states);
  try {
    for (const VariableEntry& variable : variables) {
      m_host->DefineVariable(variable);
    }
    for (const DriverEntry& driver : m_project.drivers) {
      m_host->Load(driver);
    }
  } catch (...) {
    m_host.reset();
    throw;
  }
}

void ScriptRunner::Play(const Script& script) {
  ScriptReader reader(script, m_names);
  Action action;
  bool more = true;
  while (more && !m_givenUp && !m_printer.Failed()) {
    // Whatever an action ends in, the script goes on, and the drivers come to their clean stop.
    try {
      more = reader.Next(action);
      m_where = reader.Position();
      if (more) {
        std::visit([this](const auto& what) { Do(what); }, action);
      }
    } catch (const ScriptError& error) {
      // The script was right when it was checked: a file that it names has gone since.
      m_where = reader.Position();
      ActionFailed(std::string(error.what()).substr(m_where.size() + 2));
    } catch (const std::exception& error) {
      ActionFailed(error.what());
    }
  }
  m_where = "at the end";
}

void ScriptRunner::Stop() {
  if (m_host == nullptr) {
    return;
  }
  try {
    m_host->Stop();
  } catch (const HostError& error) {
    ActionFailed(error.what());
  }
  m_host.reset();
}

void ScriptRunner::OnOccurrence(const Occurrence& occurrence) {
  const Occurrence::Kind kind = occurrence.kind;
  if (m_asking && (kind == Occurrence::Kind::Command || kind == Occurrence::Kind::Reply)) {
    return;
  }
  if (kind == Occurrence::Kind::Command && m_command) {
    Occurrence shown = occurrence;
    shown.parameters = *std::exchange(m_command, std::nullopt);
    m_printer.Print(shown, m_where);
    return;
  }
  m_printer.Print(occurrence, m_where);
  if (kind == Occurrence::Kind::Reply) {
    m_reply = occurrence.text;
  } else if (kind == Occurrence::Kind::Notification) {
    m_notification = occurrence.text;
    ++m_newNotifications;
  } else if (kind == Occurrence::Kind::Log) {
    m_log = occurrence.text;
    ++m_newLogs;
  } else if (kind == Occurrence::Kind::Manners) {
    ++m_result.badManners;
    NoteFirst();
  } else if (kind == Occurrence::Kind::Failure) {
    ++m_result.driversFailed;
    NoteFirst();
  } else if (kind == Occurrence::Kind::StateProblem) {
    ++m_result.stateProblems;
    NoteFirst();
  }
}

void ScriptRunner::BeginAction() {
  m_newNotifications = 0;
  m_newLogs = 0;
  m_command.reset();
}

void ScriptRunner::Do(const CommandAction& action) {
  BeginAction();
  const Parameters parameters = ReadParameters(action.parameters);
  m_printer.Secrets().Learn(parameters);
  m_command = ShownParameters(action, m_printer.Secrets());
  const std::string reply = action.driverId ? m_host->Command(*action.driverId, action.name, parameters)
                                            : m_host->Command(action.name, parameters);
  if (action.mustSucceed) {
    const std::optional<std::string> failure = FailureIn(reply);
    if (failure) {
      throw HostError(m_names.Name(*action.driverId) + " refused: " + *failure);
    }
  }
}

void ScriptRunner::Do(const EventAction& action) {
  BeginAction();
  m_host->SendEvent(action.name, ReadParameters(action.parameters));
}

void ScriptRunner::Do(const RestartAction&) {
  BeginAction();
  m_printer.Line("restart", "");
  // The project as the script has changed it, with its own flags: only what drivers keep brings another flag back.
  const std::vector<VariableEntry> variables = m_host->Variables(Host::Flags::Initial);
  Stop();
  try {
    Start(variables);
  } catch (const HostError& error) {
    m_givenUp = true;
    throw HostError(std::string(error.what()) + "; the rest of the script is not played");
  }
}

void ScriptRunner::Do(const PrintAction& action) {
  m_printer.Line("print", action.text);
}

void ScriptRunner::Do(const ShowAction& action) {
  if (action.what == ShowAction::What::Variables) {
    return ShowVariables();
  }
  if (action.what == ShowAction::What::State) {
    return ShowState(action.driverId);
  }
  if (action.what == ShowAction::What::Daemon) {
    return ShowDaemon(action.driverId);
  }
  const std::string& driver = m_names.Name(action.driverId);
  if (action.what == ShowAction::What::File) {
    ShowFile(action.driverId);
  } else if (action.what == ShowAction::What::Counts) {
    m_printer.Line("counts", driver + " " + CountLine(Ask(action.driverId, "GetCounts")));
  } else {
    for (const std::string& line : SettingLines(m_printer.Secrets().Xml(Ask(action.driverId, "GetSettings")))) {
      m_printer.Line("settings", driver + " " + line);
    }
  }
}

void ScriptRunner::ShowFile(unsigned long driverId) {
  const std::string& driver = m_names.Name(driverId);
  const std::string text = DeviceFile(driverId);
  m_printer.Secrets().LearnFromConfig(text);
  std::size_t at = 0;
  while (at < text.size() && !m_printer.Failed()) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    m_printer.Line("file", driver + " | " + m_printer.Secrets().ConfigLine(std::string_view(text).substr(at, end - at)));
    if (end == text.size()) {
      m_printer.Line("file", driver + " (no line feed at the end)");
    }
    at = end + 1;
  }
  if (text.empty()) {
    m_printer.Line("file", driver + " (empty)");
  }
}

void ScriptRunner::Do(const ExpectAction& action) {
  if (action.comparison == ExpectAction::Comparison::None) {
    return CheckNone(action);
  }
  const std::string subject = Subject(action, m_names);
  std::string found;
  std::string expected = action.text;
  try {
    found = Found(action);
    if (action.comparison == ExpectAction::Comparison::Golden) {
      expected = ReadRegularFile(action.text);
    }
  } catch (const HostError& error) {
    return ExpectationFailed(error.what(), {"  expected: " + Beginning(Masked(action, expected))});
  }
  if (action.comparison == ExpectAction::Comparison::Matches) {
    if (!Pattern(expected).IsIn(found)) {
      ExpectationFailed(subject + " does not match",
                        {"  expected: " + Masked(action, expected), "  found:    " + Beginning(Masked(action, found))});
    }
    return;
  }
  const bool golden = action.comparison == ExpectAction::Comparison::Golden;
  if (golden && expected.find(kTimePlaceholder) != std::string::npos) {
    found = Pattern(kTimePattern).ReplaceIn(found, kTimePlaceholder);
  }
  if (found != expected) {
    ExpectationFailed(
        subject +
            (golden ? " is not what the golden file " + Quoted(action.text) + " holds" : std::string(" is not as expected")),
        ExplainDifference(expected, found, [this, &action](const std::string& text) { return Masked(action, text); }));
  }
}

void ScriptRunner::CheckNone(const ExpectAction& action) {
  const bool log = action.subject == ExpectAction::Subject::Log;
  const std::size_t count = log ? m_newLogs : m_newNotifications;
  if (count != 0) {
    const std::string& last = log ? *m_log : *m_notification;
    ExpectationFailed(log ? "there was a log line" : "there was a notification",
                      {"  expected: none", "  found:    " + Beginning(Masked(action, last)) +
                                               (count == 1 ? "" : " (the last of " + std::to_string(count) + ")")});
  }
}

std::string ScriptRunner::Found(const ExpectAction& action) {
  if (action.subject == ExpectAction::Subject::File) {
    return DeviceFile(action.driverId);
  }
  if (action.subject == ExpectAction::Subject::Setting) {
    const std::string settings = Ask(action.driverId, "GetSettings");
    const std::optional<std::string> value = SettingIn(settings, action.setting);
    if (!value) {
      throw HostError(m_names.Name(action.driverId) + " has no setting " + Quoted(action.setting) +
                      "; it has: " + SettingNames(settings));
    }
    return *value;
  }
  if (action.subject == ExpectAction::Subject::Flag) {
    return FoundFlag(action);
  }
  if (action.subject == ExpectAction::Subject::State) {
    return FoundState(action);
  }
  if (action.subject == ExpectAction::Subject::Output) {
    return FoundOutput(action);
  }
  const bool reply = action.subject == ExpectAction::Subject::Reply;
  const bool log = action.subject == ExpectAction::Subject::Log;
  const std::optional<std::string>& last = reply ? m_reply : log ? m_log : m_notification;
  if (!last) {
    throw HostError(std::string("there has been no ") + (reply ? "reply" : log ? "log line" : "notification") + " yet");
  }
  return *last;
}

std::string ScriptRunner::Masked(const ExpectAction& action, const std::string& text) {
  const bool secret = action.subject == ExpectAction::Subject::Setting && IsSecretSetting(action.setting);
  return secret ? m_printer.Secrets().Secret(text) : m_printer.Secrets().Text(text);
}

std::string ScriptRunner::Ask(unsigned long driverId, const char* command) {
  m_asking = true;
  std::string reply;
  try {
    reply = m_host->Command(driverId, command, {});
  } catch (...) {
    m_asking = false;
    throw;
  }
  m_asking = false;
  m_printer.Secrets().LearnFromXml(reply);
  const std::optional<std::string> failure = FailureIn(reply);
  if (failure) {
    throw HostError(m_names.Name(driverId) + " refused: " + *failure);
  }
  return reply;
}

std::string ScriptRunner::DeviceFile(unsigned long driverId) {
  const std::string path = FilePathIn(Ask(driverId, "GetFilePath"));
  if (path.empty()) {
    throw HostError(m_names.Name(driverId) + " names no file");
  }
  try {
    return ReadRegularFileAt(AT_FDCWD, path);  // the driver follows no link either
  } catch (const FileError& error) {
    throw HostError(error.what());
  }
}

void ScriptRunner::ActionFailed(const std::string& problem) {
  ++m_result.actionsFailed;
  NoteFirst();
  m_printer.Line("error", m_where + ": " + m_printer.Secrets().Text(problem));
}

void ScriptRunner::ExpectationFailed(const std::string& problem, const std::vector<std::string>& details) {
  ++m_result.expectationsFailed;
  NoteFirst();
  m_printer.Line("expect", m_where + ": " + m_printer.Secrets().Text(problem));
  for (const std::string& detail : details) {
    m_printer.Line("expect", detail);
  }
}

void ScriptRunner::NoteFirst() {
  if (m_result.first.empty()) {
    m_result.first = m_where;
  }
}

}  // namespace devhost

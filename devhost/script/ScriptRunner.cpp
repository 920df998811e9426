#include "devhost/script/ScriptRunner.h"

#include <fcntl.h>

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <utility>

#include "devhost/script/DeviceReplies.h"
#include "devhost/script/LearntStates.h"
#include "devhost/script/ScriptPrograms.h"
#include "devhost/state/StateStore.h"
#include "devhost/system/FileText.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Kind = ScriptOccurrence::Kind;

Parameters ReadParameters(const std::vector<ScriptParameter>& given) {
  Parameters parameters;
  parameters.reserve(given.size());
  for (const ScriptParameter& parameter : given) {
    parameters.emplace_back(parameter.name, parameter.isFile ? ReadFileText(parameter.value) : parameter.value);
  }
  return parameters;
}

// The parameters of a command, which show no secrets, as the script writes them: the text of a file can be long and is not
// what one wants to see in a line.
Parameters WrittenParameters(const Parameters& shown, const std::vector<ScriptParameter>& given) {
  Parameters written;
  for (std::size_t i = 0; i != given.size(); ++i) {
    const std::string& value = given[i].isFile ? given[i].value : shown[i].second;
    const bool isMarked = given[i].isFile || value.compare(0, 1, "@") == 0;
    written.emplace_back(shown[i].first, (isMarked ? "@" : "") + value);
  }
  return written;
}

}  // namespace

ScriptRunner::ScriptRunner(const Project& project, const DriverNames& names, StateStore& states, Reporter& reporter,
                           Masker& secrets)
    : m_project(project),
      m_names(names),
      m_states(std::make_unique<LearntStates>(states, secrets)),
      m_reporter(reporter),
      m_secrets(secrets),
      m_expectations(names, secrets) {
  for (const DriverEntry& driver : project.drivers) {
    m_secrets.Xml(driver.configXml);
  }
}

ScriptRunner::~ScriptRunner() = default;

void ScriptRunner::Start(const std::vector<VariableEntry>& variables) {
  HostObserver& observer = *this;
  m_host = std::make_unique<Host>(observer, m_states.get());
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
  Play(reader);
}

bool ScriptRunner::PlayLine(const Script& line, std::size_t number) {
  const std::size_t before = m_result.Sum();
  ScriptReader reader(line, m_names, number);
  Play(reader);
  ScriptOccurrence done{Kind::Done};
  done.good = m_result.Sum() == before;
  m_reporter.Report(done, {line.name + ":" + std::to_string(number), number});
  return done.good;
}

void ScriptRunner::Play(ScriptReader& reader) {
  Action action;
  bool more = true;
  while (more && !m_givenUp && !m_reporter.Failed()) {
    // Whatever an action ends in, the script goes on, and the drivers come to their clean stop.
    try {
      more = reader.Next(action);
      m_where = reader.Place();
      if (more) {
        DoOne(action);
      }
    } catch (const ScriptError& error) {
      // A script was right when it was checked, so a file that it names has gone since. A line of a session is not checked.
      m_where = reader.Place();
      ReportFailure(std::runtime_error(std::string(error.what()).substr(m_where.text.size() + 2)));
    } catch (const std::exception& error) {
      ReportFailure(error);
    }
  }
  m_where = {"at the end"};
}

void ScriptRunner::Play(const Action& action, const Where& where) {
  m_where = where;
  try {
    DoOne(action);
  } catch (const std::exception& error) {
    ReportFailure(error);
  }
  m_where = {"at the end"};
}

void ScriptRunner::DoOne(const Action& action) {
  m_sending = nullptr;
  m_expectations.BeginAction(action);
  std::visit([this](const auto& what) { Do(what); }, action);
}

KnownNames ScriptRunner::Names() const {
  KnownNames known;
  for (const DriverEntry& driver : m_project.drivers) {
    known.drivers[driver.id] = driver.name;
  }
  if (m_host != nullptr) {
    known.commands = m_host->Commands();
  }
  return known;
}

void ScriptRunner::Stop() {
  if (m_host == nullptr) {
    return;
  }
  try {
    m_host->Stop();
  } catch (const HostError& error) {
    ReportFailure(error);
  }
  m_host.reset();
}

void ScriptRunner::OnOccurrence(const Occurrence& occurrence) {
  const Occurrence::Kind kind = occurrence.kind;
  if (m_asking && (kind == Occurrence::Kind::Command || kind == Occurrence::Kind::Reply)) {
    return;
  }
  m_expectations.Note(occurrence);
  const Occurrence shown = Masked(occurrence, m_secrets);
  if (kind == Occurrence::Kind::Command && m_sending != nullptr) {
    const Parameters written = WrittenParameters(shown.parameters, std::exchange(m_sending, nullptr)->parameters);
    return Report({Kind::Command, shown.driverId, shown.driverName, "", shown.name, shown.parameters, written});
  }
  if (kind == Occurrence::Kind::Manners) {
    Count(m_result.badManners);
  } else if (kind == Occurrence::Kind::Failure) {
    Count(m_result.driversFailed);
  } else if (kind == Occurrence::Kind::StateProblem) {
    Count(m_result.stateProblems);
  }
  Report(shown);
}

void ScriptRunner::ReportFailure(const std::exception& error) {
  Count(m_result.actionsFailed);
  // A command that was not sent has no driver: nobody knows what the author of the script has written there.
  const bool isUnknown = m_sending != nullptr && !m_sending->mustSucceed;
  const auto shown = [&](const std::string& text) {
    std::string known = text;
    if (isUnknown) {
      boost::replace_all(known, Quoted(m_sending->name), Quoted(kMask));
      boost::replace_all(known, '"' + m_sending->name + '"', Quoted(kMask));
    }
    return m_secrets.Text(known);
  };
  ScriptOccurrence failure{Kind::Error, 0, "", shown(error.what())};
  if (const HostError* const concerned = dynamic_cast<const HostError*>(&error)) {
    failure.driverId = concerned->driverId;
    failure.driverName = concerned->driverName;
    failure.call = shown(concerned->call);
  }
  Report(failure);
}

void ScriptRunner::Count(std::size_t& number) {
  ++number;
  if (m_result.first.empty()) {
    m_result.first = m_where.text;
  }
}

void ScriptRunner::Do(const CommandAction& action) {
  const Parameters parameters = ReadParameters(action.parameters);
  m_sending = &action;
  const std::string reply = action.driverId ? m_host->Command(*action.driverId, action.name, parameters)
                                            : m_host->Command(action.name, parameters);
  if (action.mustSucceed) {
    CheckReply(m_names.Name(*action.driverId), reply);
  }
}

void ScriptRunner::Do(const EventAction& action) {
  m_host->SendEvent(action.name, ReadParameters(action.parameters));
}

void ScriptRunner::Do(const VariableAction& action) {
  if (action.add) {
    m_host->AddVariable(action.variable);
  } else {
    m_host->RemoveVariable(action.variable.deviceId, action.variable.variableId, action.variable.user);
  }
}

void ScriptRunner::Do(const FlagAction& action) {
  m_host->SetTrapEnabled(action.deviceId, action.variableId, action.enabled);
  ScriptOccurrence flag{Kind::Flag};
  flag.variables = {{action.deviceId, action.variableId, "", false, false, action.enabled}};
  Report(flag);
}

void ScriptRunner::Do(const RestartAction&) {
  Report({Kind::Restart});
  // The project as the script has changed it, with its own flags: only what drivers keep brings another flag back.
  const std::vector<VariableEntry> variables = m_host->Variables(Host::Flags::Initial);
  Stop();
  try {
    Start(variables);
  } catch (const HostError& error) {
    m_givenUp = true;
    throw HostError(error, "; the rest of the script is not played");
  }
}

void ScriptRunner::Do(const RunAction& action) {
  m_expectations.NoteOutput(std::nullopt);
  ProgramRun run;
  run.folder = action.folder;
  for (const std::string& word : action.words) {
    run.words.push_back(WithAddresses(
        word, [this](const std::string& driver) { return DaemonIn(Ask(m_names.Find(driver), "GetDaemon")).address; }));
  }
  Report({Kind::Run, 0, "", m_secrets.CommandLine(run.words)});
  const ProgramResult result = RunProgram(run);
  m_expectations.NoteOutput(result.output);
  Report({Kind::Output, 0, "", m_secrets.Text(result.output, WrittenBy::Others)});
  CheckRun(run, result);
}

void ScriptRunner::Do(const ShowAction& action) {
  ScriptOccurrence shown{action.what};
  if (action.what == Kind::Variables) {
    shown.variables = m_host->Variables(Host::Flags::Current);
    for (VariableEntry& variable : shown.variables) {
      variable.name = m_secrets.Text(variable.name);
    }
    return Report(shown);
  }
  shown.driverId = action.driverId;
  shown.driverName = m_names.Name(action.driverId);
  if (action.what == Kind::File) {
    const std::string file = DeviceFile(action.driverId);
    shown.text = m_secrets.Config(file);
    if (!m_secrets.ShowsSecrets() && !WhyNotPlain(file).empty()) {
      shown.text += '\n';  // it is not the file's last line that is shown
    }
  } else if (action.what == Kind::State) {
    shown.text = m_secrets.Xml(m_host->GetPersistState(action.driverId, XmlStyle::Compact));
  } else if (action.what == Kind::Settings) {
    shown.settings = SettingsIn(m_secrets.Xml(Ask(action.driverId, "GetSettings")));
  } else if (action.what == Kind::Counts) {
    shown.counts = CountsIn(m_secrets.Xml(Ask(action.driverId, "GetCounts")));
  } else {
    shown.daemon = DaemonIn(m_secrets.Xml(Ask(action.driverId, "GetDaemon")));
  }
  Report(shown);
}

void ScriptRunner::Do(const ExpectAction& action) {
  const auto unmet = m_expectations.Check(action, [this, &action] { return LookUp(action); });
  if (unmet) {
    Count(m_result.expectationsFailed);
    Report(*unmet);
  }
}

std::string ScriptRunner::LookUp(const ExpectAction& action) {
  using Subject = ExpectAction::Subject;
  if (action.subject == Subject::File) {
    return DeviceFile(action.driverId);
  }
  if (action.subject == Subject::Flag) {
    return m_host->TrapEnabled(action.driverId, action.variableId) ? "true" : "false";
  }
  if (action.subject == Subject::State) {
    if (action.comparison != ExpectAction::Comparison::Golden) {
      return m_host->GetPersistState(action.driverId, XmlStyle::Compact);
    }
    // A golden file looks like the file in a state folder.
    const std::string state = m_host->GetPersistState(action.driverId, XmlStyle::Indented);
    return state.empty() ? state : state + "\n";
  }
  return SettingIn(m_names.Name(action.driverId), Ask(action.driverId, "GetSettings"), action.setting);
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
  m_secrets.Xml(reply);
  CheckReply(m_names.Name(driverId), reply);
  return reply;
}

std::string ScriptRunner::DeviceFile(unsigned long driverId) {
  const std::string path = FilePathIn(m_names.Name(driverId), Ask(driverId, "GetFilePath"));
  return ReadRegularFileAt(AT_FDCWD, path);  // the driver follows no link either
}

}  // namespace devhost

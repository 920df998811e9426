#ifndef DEVHOST_SCRIPT_SCRIPT_RUNNER_H
#define DEVHOST_SCRIPT_SCRIPT_RUNNER_H

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "devhost/engine/Host.h"
#include "devhost/project/Project.h"
#include "devhost/report/Reporter.h"
#include "devhost/script/Script.h"
#include "devhost/script/ScriptActions.h"
#include "devhost/script/ScriptExpectations.h"
#include "devhost/script/ScriptReader.h"
#include "devhost/secrets/Masker.h"

namespace devhost {

// Plays a script on a host: starts the host with the drivers, does what the script says and stops the host. Everything that
// happens is reported as it happens. An action that fails and an expectation that is not met are reported, too, and the
// script goes on.
class ScriptRunner : private HostObserver {
 public:
  // All arguments must outlive the runner.
  ScriptRunner(const Project& project, const DriverNames& names, StateStore& states, Reporter& reporter, Masker& secrets);
  ~ScriptRunner() override;
  ScriptRunner(const ScriptRunner&) = delete;
  ScriptRunner& operator=(const ScriptRunner&) = delete;

  // Loads the drivers. Throws HostError, with nothing left loaded, when one cannot be loaded.
  void Start() { Start(m_project.variables); }
  // Plays a script that CheckScript has passed. Gives up early when a restart fails or nobody sees the report any more.
  void Play(const Script& script);
  // Plays one line of a session, which nobody has checked, as the line with that number, and reports that it is done.
  // Returns whether it went well. A line without an action does.
  bool PlayLine(const Script& line, std::size_t number);
  // Plays one action of somebody who reads no script.
  void Play(const Action& action, const Where& where);
  // Whether there is nothing more to play to, because a restart has failed.
  bool HasGivenUp() const { return m_givenUp; }
  // What a line can name now.
  KnownNames Names() const;
  // Unloads the drivers.
  void Stop();

  struct Result {
    std::size_t actionsFailed = 0;
    std::size_t expectationsFailed = 0;
    std::size_t badManners = 0;
    std::size_t stateProblems = 0;
    std::size_t driversFailed = 0;
    std::string first;  // where the first of them was
    bool Good() const { return first.empty(); }
    std::size_t Sum() const { return actionsFailed + expectationsFailed + badManners + stateProblems + driversFailed; }
  };
  const Result& GetResult() const { return m_result; }

 private:
  void OnOccurrence(const Occurrence& occurrence) override;
  void Start(const std::vector<VariableEntry>& variables);
  void Play(ScriptReader& reader);
  void DoOne(const Action& action);

  // One action each. Whatever it throws makes it a failed action.
  void Do(const CommandAction& action);
  void Do(const EventAction& action);
  void Do(const VariableAction& action);
  void Do(const RemoveItemAction& action) { m_host->RemoveItem(action.itemId, action.roomId); }
  void Do(const FlagAction& action);
  void Do(const LoadProjectAction&) { m_host->LoadProject(); }
  void Do(const ShowAction& action);
  void Do(const RestartAction& action);
  void Do(const RunAction& action);
  void Do(const PrintAction& action) { Report({ScriptOccurrence::Kind::Print, 0, "", m_secrets.Text(action.text)}); }
  void Do(const ExpectAction& action);

  // What an expectation looks at in the host. Throws std::runtime_error when there is nothing.
  std::string LookUp(const ExpectAction& action);
  // Asks a driver something on the script's behalf: command and reply are not reported and are not the "last reply".
  std::string Ask(unsigned long driverId, const char* command);
  std::string DeviceFile(unsigned long driverId);

  void Report(const Occurrence& occurrence) { m_reporter.Report(occurrence, m_where); }
  void Report(const ScriptOccurrence& occurrence) { m_reporter.Report(occurrence, m_where); }
  void ReportFailure(const std::exception& error);
  // Counts something that must not be.
  void Count(std::size_t& number);

  const Project& m_project;
  const DriverNames& m_names;
  std::unique_ptr<StateStore> m_states;
  Reporter& m_reporter;
  Masker& m_secrets;
  ScriptExpectations m_expectations;
  std::unique_ptr<Host> m_host;
  Where m_where{"at the start"};
  const CommandAction* m_sending = nullptr;  // the command that goes out next
  bool m_asking = false;
  bool m_givenUp = false;
  Result m_result;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_SCRIPT_SCRIPT_RUNNER_H
#define DEVHOST_SCRIPT_SCRIPT_RUNNER_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devhost/engine/Host.h"
#include "devhost/project/Project.h"
#include "devhost/report/Printer.h"
#include "devhost/script/Script.h"
#include "devhost/script/ScriptReader.h"

namespace devhost {

// Plays a script on a host: starts the host with the drivers, does what the script says and stops the host. Everything that
// happens is printed as it happens; an action that fails is printed as "error", an expectation that is not met as "expect",
// and the script goes on.
class ScriptRunner : private HostObserver {
 public:
  // All arguments must outlive the runner.
  ScriptRunner(const Project& project, const DriverNames& names, StateStore& states, Printer& printer);
  ~ScriptRunner() override;
  ScriptRunner(const ScriptRunner&) = delete;
  ScriptRunner& operator=(const ScriptRunner&) = delete;

  // Loads the drivers. Throws HostError, with nothing left loaded, when one cannot be loaded.
  void Start() { Start(m_project.variables); }
  // Plays a script that CheckScript has passed. Gives up early when a restart fails or nobody takes the output any more.
  void Play(const Script& script);
  // Unloads the drivers.
  void Stop();

  struct Result {
    std::size_t actionsFailed = 0;
    std::size_t expectationsFailed = 0;
    std::size_t badManners = 0;
    std::size_t stateProblems = 0;
    std::size_t driversFailed = 0;
    std::string first;  // where the first of them was
    bool Good() const { return actionsFailed + expectationsFailed + badManners + stateProblems + driversFailed == 0; }
  };
  const Result& GetResult() const { return m_result; }

 private:
  void OnOccurrence(const Occurrence& occurrence) override;
  void Start(const std::vector<VariableEntry>& variables);

  // One action each. Throws HostError or FileError when it fails.
  void Do(const CommandAction& action);
  void Do(const EventAction& action);
  void Do(const VariableAction& action);
  void Do(const RemoveItemAction& action);
  void Do(const FlagAction& action);
  void Do(const LoadProjectAction& action);
  void Do(const ShowAction& action);
  void Do(const RestartAction& action);
  void Do(const RunAction& action);
  void Do(const PrintAction& action);
  void Do(const ExpectAction& action);

  // Before an action that may make something happen.
  void BeginAction();
  void ShowFile(unsigned long driverId);
  void ShowVariables();
  void ShowState(unsigned long driverId);
  void ShowDaemon(unsigned long driverId);
  void ShowOutput(const std::string& output);
  void CheckNone(const ExpectAction& action);
  // What an expectation looks at. Throws HostError when there is nothing.
  std::string Found(const ExpectAction& action);
  std::string FoundFlag(const ExpectAction& action) const;
  std::string FoundState(const ExpectAction& action);
  std::string FoundOutput(const ExpectAction& action) const;
  // A text as an expectation about that subject shows it.
  std::string Masked(const ExpectAction& action, const std::string& text);
  // Asks a driver something on the script's behalf: command and reply are not printed and are no "last reply".
  std::string Ask(unsigned long driverId, const char* command);
  std::string DeviceFile(unsigned long driverId);

  void ActionFailed(const std::string& problem);
  void ExpectationFailed(const std::string& problem, const std::vector<std::string>& details);
  void NoteFirst();

  const Project& m_project;
  const DriverNames& m_names;
  StateStore& m_states;
  Printer& m_printer;
  std::unique_ptr<Host> m_host;
  std::string m_where;                  // what is being done: "FILE:LINE"
  std::optional<Parameters> m_command;  // how those of the command that goes out next are shown
  bool m_asking = false;
  bool m_givenUp = false;
  std::optional<std::string> m_reply;
  std::optional<std::string> m_notification;
  std::optional<std::string> m_log;
  std::optional<std::string> m_output;  // of the last program
  std::size_t m_newNotifications = 0;   // since the last action that could have caused any
  std::size_t m_newLogs = 0;
  Result m_result;
};

}  // namespace devhost

#endif

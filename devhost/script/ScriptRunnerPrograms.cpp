// What ScriptRunner does about programs and the daemons behind devices.
#include <algorithm>

#include "devhost/script/DeviceReplies.h"
#include "devhost/script/ScriptPrograms.h"
#include "devhost/script/ScriptRunner.h"
#include "devhost/system/RunProgram.h"

namespace devhost {

namespace {

// Why a run is a failure, or "".
std::string FailureOf(const ProgramResult& result, const ProgramRun& run) {
  if (result.late) {
    return "was ended because it took longer than " +
           std::to_string(std::chrono::duration_cast<std::chrono::seconds>(run.deadline).count()) + " seconds";
  }
  if (result.tooLong) {
    return "was ended because it wrote more than " + std::to_string(run.longestOutput) + " bytes";
  }
  if (result.signal != 0) {
    return "was ended by signal " + std::to_string(result.signal);
  }
  return result.exitStatus == 0 ? "" : "ended with status " + std::to_string(result.exitStatus);
}

}  // namespace

void ScriptRunner::Do(const RunAction& action) {
  BeginAction();
  m_output.reset();
  ProgramRun run;
  run.folder = action.folder;
  for (const std::string& word : action.words) {
    run.words.push_back(WithAddresses(
        word, [this](const std::string& driver) { return DaemonIn(Ask(m_names.Find(driver), "GetDaemon")).address; }));
  }
  Masker& secrets = m_printer.Secrets();
  secrets.LearnFromCommandLine(run.words);
  m_printer.Line("run", secrets.CommandLine(run.words));
  const ProgramResult result = RunProgram(run);
  m_output = result.output;
  ShowOutput(result.output);
  const std::string failure = FailureOf(result, run);
  if (!failure.empty()) {
    throw HostError(run.words.front() + " " + failure);
  }
}

void ScriptRunner::ShowOutput(const std::string& output) {
  const Masker& secrets = m_printer.Secrets();
  for (std::size_t at = 0; at < output.size() && !m_printer.Failed();) {
    const std::size_t end = std::min(output.find('\n', at), output.size());
    m_printer.Line("output", "| " + secrets.Text(output.substr(at, end - at)));
    at = end + 1;
  }
}

void ScriptRunner::ShowDaemon(unsigned long driverId) {
  m_printer.Line("daemon", m_names.Name(driverId) + " " + DaemonLine(DaemonIn(Ask(driverId, "GetDaemon"))));
}

std::string ScriptRunner::FoundOutput(const ExpectAction& action) const {
  if (!m_output) {
    throw HostError("there has been no output yet: no program has run");
  }
  // As a shell takes it: the last line feed is none of a line's text.
  const bool whole = action.comparison == ExpectAction::Comparison::Golden || m_output->empty() || m_output->back() != '\n';
  return whole ? *m_output : m_output->substr(0, m_output->size() - 1);
}

}  // namespace devhost

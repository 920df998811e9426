#include "drivers/localsnmpd/Daemon.h"

#include <signal.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>
#include <system_error>
#include <utility>

#include "devhost/snmp/Discovery.h"
#include "drivers/localsnmpd/DaemonConfiguration.h"
#include "drivers/localsnmpd/DaemonLog.h"
#include "drivers/localsnmpd/DaemonStatus.h"
#include "drivers/localsnmpd/UdpPort.h"

namespace drivers {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

const milliseconds kHardStop(5000);
const milliseconds kAskAgain(25);
const milliseconds kNobodyThere(5);

// The host's environment, without what would lead the daemon to other files than its own.
std::vector<std::string> MakeEnvironment(const std::string& home) {
  std::vector<std::string> environment;
  for (char** entry = ::environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (text.compare(0, 4, "SNMP") != 0 && text.compare(0, 3, "MIB") != 0 && text.compare(0, 5, "HOME=") != 0) {
      environment.push_back(text);
    }
  }
  environment.push_back("HOME=" + home);
  // It never reads what it stores itself, not even when it is told over SNMP to read its files again.
  environment.push_back("SNMPCONFPATH=" + std::string(DaemonFolder::kKeptName));
  // Absolute, because the daemon takes the names of folders that it makes for names below the root. Its path would be too
  // long, or lead elsewhere by now.
  environment.push_back("SNMP_PERSISTENT_DIR=/proc/self/cwd/" + std::string(DaemonFolder::kDataName));
  return environment;
}

// In words: "exit status 1", "killed by signal 9 (SIGKILL)".
std::string DescribeEnd(std::optional<int> waitStatus) {
  if (!waitStatus) {
    return "its exit status is unknown";
  }
  if (WIFSIGNALED(*waitStatus)) {
    const int signal = WTERMSIG(*waitStatus);
    const char* const name = ::sigabbrev_np(signal);
    return "killed by signal " + std::to_string(signal) + (name != nullptr ? " (SIG" + std::string(name) + ")" : "");
  }
  return "exit status " + std::to_string(WEXITSTATUS(*waitStatus));
}

}  // namespace

Daemon::Daemon(const Options& options, Log log) : m_options(options), m_log(std::move(log)), m_folder(options.folder) {}

std::string Daemon::GetAddress() const {
  return "udp:127.0.0.1:" + std::to_string(m_options.port);
}

bool Daemon::IsRunning() {
  if (m_process && m_process->WaitForEnd(milliseconds(0))) {
    m_log("the daemon (process " + std::to_string(m_process->Pid()) +
          ") ended by itself: " + DescribeEnd(m_process->WaitStatus()));
    m_process.reset();
  }
  return m_process != nullptr;
}

pid_t Daemon::GetPid() {
  return IsRunning() ? m_process->Pid() : 0;
}

int Daemon::Fail(int status, const std::string& reason) const {
  m_log(reason + " (status " + std::to_string(status) + ")");
  return status;
}

int Daemon::Start(const std::string& config) {
  if (IsRunning()) {
    return 0;
  }
  std::string program;
  const int status = PrepareFiles(config, program);
  return status != 0 ? status : Launch(program);
}

int Daemon::Restart(const std::string& config) {
  std::string program;
  int status = PrepareFiles(config, program);
  if (status == 0) {
    status = Stop();
  }
  return status != 0 ? status : Launch(program);
}

int Daemon::Stop() {
  if (!IsRunning()) {
    return 0;
  }
  m_process->Signal(SIGTERM);
  if (!m_process->WaitForEnd(m_options.gentleStop)) {
    m_log("the daemon (process " + std::to_string(m_process->Pid()) + ") does not stop; it is killed");
    m_process->Signal(SIGKILL);
    if (!m_process->WaitForEnd(kHardStop)) {
      return Fail(kDaemonDoesNotEnd, "the daemon (process " + std::to_string(m_process->Pid()) + ") does not end");
    }
  }
  m_process.reset();
  return 0;
}

int Daemon::PrepareFiles(const std::string& config, std::string& program) {
  program = FindDaemonProgram(m_options.program);
  if (program.empty()) {
    // Logged once in the life of a device: the tool asks often.
    if (!m_saidNotInstalled) {
      m_saidNotInstalled = true;
      Fail(kDaemonNotInstalled,
           m_options.program.empty()
               ? "snmpd is not installed: install it, or name its program in the configuration"
               : "the program " + m_options.program + " cannot be run: install it, or name another one");
    }
    return kDaemonNotInstalled;
  }
  const std::string wrong = m_folder.Prepare();
  if (!wrong.empty()) {
    return Fail(kDaemonFolderUnusable, wrong);
  }
  ServedConfig served = MakeServedConfig(config);
  try {
    m_served = std::make_unique<devhost::MemoryFile>(served.text);
  } catch (const std::system_error& error) {
    return Fail(kServedCopyNotWritten, error.what());
  }
  m_places = std::move(served.places);
  LogNotes(served.notes);
  return 0;
}

void Daemon::LogNotes(const std::vector<ServedConfig::Note>& notes) {
  for (const ServedConfig::Note& note : notes) {
    // A line that only moves with the section above it is not logged again.
    if (m_noted.insert(note.place.file + '\n' + note.line + '\n' + note.what).second) {
      m_log(note.place.file + ":" + std::to_string(note.place.line) + ": " + note.what);
    }
  }
}

devhost::ProcessImage Daemon::MakeImage(const std::string& program) const {
  // -f: stays the host's child. -LE w: warnings and worse to standard error. -m, -M: no MIB files. -r: goes on where it
  // lacks rights. -I: without the modules that open a port for an old protocol, that run programs, and that let whoever
  // holds the write community load code, write files, fill the log, or start the daemon again.
  return {
      program,
      {program, "-f", "-LE", "w", "-c", std::string(DaemonFolder::kServedName) + "," + DaemonFolder::kDriverConfigName, "-m",
       "", "-M", "", "-I", "-smux,extend,pass,pass_persist,dlmod,nsLogging,nsDebug,versioninfo", "-r", GetAddress()},
      MakeEnvironment(m_folder.GetPath()),
      m_folder.GetFolder().Get(),
      m_served->Descriptor(),
      m_folder.GetLog().Get(),
      true};
}

int Daemon::Launch(const std::string& program) {
  if (!IsUdpPortFree(m_options.port)) {
    return Fail(kPortTaken, "cannot start the daemon: another program has " + GetAddress());
  }
  const std::string wrong = m_folder.KeepData();
  if (!wrong.empty()) {
    return Fail(kDaemonFolderUnusable, wrong);
  }
  try {
    m_process = std::make_unique<devhost::KeptProcess>(MakeImage(program));
  } catch (const std::system_error& error) {
    return Fail(kDaemonNotStarted, "cannot start " + program + ": " + error.code().message());
  }
  const int status = WaitUntilReady();
  for (const std::string& line : LinesForLog(m_folder.ReadLog(), m_places, status != 0)) {
    m_log(line);
  }
  return status;
}

int Daemon::WaitUntilReady() {
  const sockaddr_in address = LocalAddress(m_options.port);
  const devhost::Discovery discovery(reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const Clock::time_point deadline = Clock::now() + m_options.startDeadline;
  while (!m_process->WaitForEnd(kNobodyThere)) {
    // Any SNMP engine answers; ours is the one whose process has the port.
    if (discovery.Ask(kAskAgain) == devhost::UdpEnd::Answered && !m_process->WaitForEnd(milliseconds(0))) {
      return OwnsUdpPort(m_process->Pid(), m_options.port) ? 0 : StopFailed(kPortTaken);
    }
    if (Clock::now() >= deadline) {
      return StopFailed(kDaemonNotReady);
    }
  }
  return StopFailed(kDaemonEndedAtStart);
}

// Stops a daemon that did not start as it should, and logs why.
int Daemon::StopFailed(int status) {
  const std::string ended = m_process->WaitForEnd(milliseconds(0)) ? DescribeEnd(m_process->WaitStatus()) : std::string();
  m_process.reset();
  if (status == kPortTaken) {
    return Fail(status, "the daemon was stopped: another program answers at " + GetAddress());
  }
  if (status == kDaemonNotReady) {
    return Fail(status,
                "the daemon did not answer at " + GetAddress() + " within " +
                    std::to_string(std::chrono::duration_cast<std::chrono::seconds>(m_options.startDeadline).count()) +
                    " s and was stopped");
  }
  return Fail(status, "the daemon ended while it started: " + ended);
}

}  // namespace drivers

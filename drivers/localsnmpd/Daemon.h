#ifndef DRIVERS_LOCALSNMPD_DAEMON_H
#define DRIVERS_LOCALSNMPD_DAEMON_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "devhost/system/KeptProcess.h"
#include "devhost/system/MemoryFile.h"
#include "drivers/localsnmpd/DaemonFolder.h"
#include "drivers/localsnmpd/ServedConfig.h"

namespace drivers {

// The SNMP daemon of one device: at most one process, which serves one UDP port of 127.0.0.1 and no other and ends with this
// object, and with the host however that ends. Statuses are those of drivers/localsnmpd/DaemonStatus.h; the reason of each
// failure is logged here.
class Daemon {
 public:
  struct Options {
    std::string folder;   // the device's
    std::string program;  // as configured, see FindDaemonProgram
    std::uint16_t port;
    std::chrono::milliseconds startDeadline;
    std::chrono::milliseconds gentleStop{5000};  // how long it may take to stop before it is killed
  };
  // One line for the host's log.
  using Log = std::function<void(const std::string&)>;

  Daemon(const Options& options, Log log);

  // Starts the daemon with this configuration and waits until it answers. A daemon that runs already is left as it is.
  // Returns 0 or a status, as do the two below.
  int Start(const std::string& config);
  // Stops it if it runs and starts it with another configuration. Fails before it stops the daemon where it can.
  int Restart(const std::string& config);
  // Stops it if it runs: with SIGTERM, and SIGKILL if that does not help.
  int Stop();

  // Whether it runs. Logs a daemon that has ended by itself since the last call of this or of any of the above.
  bool IsRunning();
  // Its process, 0 when it does not run.
  pid_t GetPid();
  // "udp:127.0.0.1:PORT", whether it runs or not.
  std::string GetAddress() const;

 private:
  int PrepareFiles(const std::string& config, std::string& program);
  int Launch(const std::string& program);
  int WaitUntilReady();
  int StopFailed(int status);
  void LogNotes(const std::vector<ServedConfig::Note>& notes);
  devhost::ProcessImage MakeImage(const std::string& program) const;
  int Fail(int status, const std::string& reason) const;

  const Options m_options;
  const Log m_log;
  DaemonFolder m_folder;
  std::unique_ptr<devhost::MemoryFile> m_served;  // what the daemon reads, as long as it runs
  std::vector<ServedConfig::Place> m_places;      // of its lines
  std::set<std::string> m_noted;                  // the notes about lines of the configuration that are in the log already
  bool m_saidNotInstalled = false;
  std::unique_ptr<devhost::KeptProcess> m_process;
};

}  // namespace drivers

#endif

#ifndef TESTS_E2E_REAL_SYSTEM_H
#define TESTS_E2E_REAL_SYSTEM_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "devhost/engine/Host.h"
#include "devhost/state/StateStore.h"
#include "device/TrapTarget.h"
#include "tests/devhost/support/RecordingObserver.h"
#include "tests/e2e/SnmpClient.h"
#include "tests/e2e/TrapReceiver.h"
#include "tests/support/ScratchFolder.h"

namespace e2e {

// The settings of a device, as somebody edits them in the tool.
struct Settings {
  std::string read = {};
  std::string write = {};
  std::string contact = {};
  std::string location = {};
  std::string name = {};
  std::vector<TrapTarget> traps = {};
};
// The element that the tool sends.
std::string SettingsElement(unsigned long id, const Settings& settings);

// What the driver says of its daemon.
struct Daemon {
  bool running = false;
  pid_t pid = 0;
  std::string address;
  bool online = false;
  bool pending = false;
};

// A file without what differs from write to write.
std::string WithoutTime(std::string text);
// Whether that daemon is there, be it as a dead child that nobody has reaped.
bool Exists(pid_t daemon);

// The built modules in a development host: the agent as driver 1, devices with real files and real daemons as 12 and 7. The
// host keeps states as long as the test lives.
class ARealSystem : public testing::Test {
 protected:
  static constexpr unsigned long kAgent = 1;
  static constexpr unsigned long kKitchen = 12;
  static constexpr unsigned long kBath = 7;

  ARealSystem();
  // Stops the host; daemons left behind and broken manners are failures.
  ~ARealSystem() override;

  // The folder of a device, with that text as its snmpd.conf.
  void MakeDevice(unsigned long id, const std::string& file);
  // Loads the agent, then a device into its folder, which is the one in the scratch folder unless another is named.
  void LoadAgent();
  void LoadDevice(unsigned long id, const std::string& folder = {});
  // All of the above for the kitchen alone.
  void Begin(const std::string& file = "# by hand\n");
  // Stops the host and makes a new one, with nothing loaded.
  void RestartHost();

  // Commands of the tool, and what it is answered.
  std::string SetState(unsigned long id, const Settings& settings);
  std::string Action(unsigned long id, const std::string& name);
  bool IsDirty(unsigned long id);
  // Commands of the driver.
  std::string SetOnline(unsigned long id, bool online);
  Daemon GetDaemon(unsigned long id);
  int Count(unsigned long id, const std::string& operation);

  // SetDeviceState and StartMasterAgent; both must succeed.
  void Serve(unsigned long id, const Settings& settings);

  SnmpClient As(const std::string& community, unsigned long id = kKitchen);
  // Whether a community gets nothing. Silence alone could be a daemon that is slow, so it is also asked, by somebody who
  // may, whether it has refused just this one.
  bool Refuses(const std::string& community, const SnmpClient& asker, unsigned long id = kKitchen);

  std::string File(unsigned long id) const;
  void WriteFile(unsigned long id, const std::string& text) const;
  // The log lines so far.
  std::vector<std::string> Log() const { return observer.Texts(devhost::Occurrence::Kind::Log); }

  testsupport::ScratchFolder folder;
  RecordingObserver observer;
  devhost::StateMemory states;
  std::unique_ptr<devhost::Host> host;

 private:
  static std::string NameOf(unsigned long id) { return id == kKitchen ? "kitchen" : "bath"; }
  void Load(unsigned long id, const std::string& name, const std::string& module, const std::string& config);
  void StopHost();

  std::vector<pid_t> m_daemons;  // all that were seen
};

}  // namespace e2e

#endif

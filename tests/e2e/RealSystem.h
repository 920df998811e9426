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
// Returns the element that the tool sends.
std::string SettingsElement(unsigned long id, const Settings& settings);

// What the driver says about its daemon.
struct Daemon {
  bool running = false;
  pid_t pid = 0;
  std::string address;
  bool online = false;
  bool pending = false;
};

// Returns a file without the text that differs from write to write.
std::string WithoutTime(std::string text);
// Returns whether the process exists, even as a dead child that nobody has reaped.
bool Exists(pid_t daemon);

// The built modules in a development host: the agent as driver 1, devices with real files and real daemons as 12 and 7. The
// host keeps states as long as the test lives.
class ARealSystem : public testing::Test {
 protected:
  static constexpr unsigned long kAgent = 1;
  static constexpr unsigned long kKitchen = 12;
  static constexpr unsigned long kBath = 7;

  ARealSystem();
  // Stops the host. Remaining daemons and bad manners are failures.
  ~ARealSystem() override;

  // Makes the folder of a device, with the text `file` as its snmpd.conf.
  void MakeDevice(unsigned long id, const std::string& file);
  // Load the agent, and a device with its folder, which is in the scratch folder unless `folder` names another.
  void LoadAgent();
  void LoadDevice(unsigned long id, const std::string& folder = {});
  // Does all of the above for the kitchen alone.
  void Begin(const std::string& file = "# by hand\n");
  // Stops the host and makes a new one, with nothing loaded.
  void RestartHost();

  // Send a command of the tool and return the answer.
  std::string SetState(unsigned long id, const Settings& settings);
  std::string Action(unsigned long id, const std::string& name);
  bool IsDirty(unsigned long id);
  // Send a command of the driver.
  std::string SetOnline(unsigned long id, bool online);
  Daemon GetDaemon(unsigned long id);
  int Count(unsigned long id, const std::string& operation);

  // Sends SetDeviceState and StartMasterAgent. Both must succeed.
  void Serve(unsigned long id, const Settings& settings);

  SnmpClient As(const std::string& community, unsigned long id = kKitchen);
  // Returns whether the daemon refuses a community. Without an answer the daemon could just be slow. So `asker`, who has
  // access, also asks the daemon whether it has counted one more refusal.
  bool Refuses(const std::string& community, const SnmpClient& asker, unsigned long id = kKitchen);

  std::string File(unsigned long id) const;
  void WriteFile(unsigned long id, const std::string& text) const;
  // Returns the log lines so far.
  std::vector<std::string> Log() const { return observer.Texts(devhost::Occurrence::Kind::Log); }

  testsupport::ScratchFolder folder;
  RecordingObserver observer;
  devhost::StateMemory states;
  std::unique_ptr<devhost::Host> host;

 private:
  static std::string NameOf(unsigned long id) { return id == kKitchen ? "kitchen" : "bath"; }
  void Load(unsigned long id, const std::string& name, const std::string& module, const std::string& config);
  void StopHost();

  std::vector<pid_t> m_daemons;  // every daemon that a test has seen
};

}  // namespace e2e

#endif

// Kills the real program at random moments during many changes, and checks what it leaves behind.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <tuple>

#include "tests/e2e/Background.h"
#include "tests/e2e/RealSystem.h"
#include "tests/e2e/Wait.h"
#include "tests/e2e/World.h"

namespace e2e {
namespace {

using std::filesystem::exists;

// Changes differ at both ends of the section, and the foreign text has several disk blocks, so a mixture would be noticed.
Settings Change(const std::string& word) {
  Settings settings;
  settings.read = "read" + word;
  settings.contact = std::string(200, word[0]);
  settings.name = word;
  settings.traps = {TrapTarget("127.0.0.1", "trap" + word, "9")};
  return settings;
}

std::string ForeignText() {
  std::string text = "rocommunity owner\n";
  for (int line = 0; line != 400; ++line) {
    text += "# by hand, line " + std::to_string(line) + "\n";
  }
  return text + "# the last line\n";
}

class AHostThatIsKilled : public ARealSystem {
 protected:
  static constexpr int kRequests = 200;

  AHostThatIsKilled() {
    // Daemons that outlive the killed program become children of this process, so the test finds all of them.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    MakeDevice(kKitchen, ForeignText());
    folder.Write("odd.xml", SettingsElement(kKitchen, Change("odd")));
    folder.Write("even.xml", SettingsElement(kKitchen, Change("even")));
    folder.Write("project.xml",
                 "<project>\n<driver id='1' name='agent' module='snmp_configuration_agent.so'/>\n"
                 "<driver id='12' name='kitchen' module='local_snmpd.so'><config folder='{project}/kitchen'/></driver>\n"
                 "</project>\n");
    std::string script = "load-project\ncommand StartMasterAgent deviceId=12\n";
    for (int request = 0; request != kRequests; request += 2) {
      script += "command SetDeviceState xml=@odd.xml\ncommand SetDeviceState xml=@even.xml\n";
    }
    folder.Write("changes.devhost", script);
  }
  ~AHostThatIsKilled() override { ::prctl(PR_SET_CHILD_SUBREAPER, 0); }

  // Returns the file that was there at first, and the file after each change, without the time.
  std::set<std::string> PossibleFiles() {
    std::set<std::string> files = {File(kKitchen)};
    LoadAgent();
    LoadDevice(kKitchen);
    for (const char* const word : {"odd", "even"}) {
      EXPECT_EQ(SetState(kKitchen, Change(word)), "<Success/>");
      files.insert(WithoutTime(File(kKitchen)));
    }
    RestartHost();
    WriteFile(kKitchen, ForeignText());
    return files;
  }

  // Returns how many changes the program has reported.
  int Changes() const {
    const std::string output = folder.Read("output");
    int changes = 0;
    for (std::size_t at = output.find("DeviceChanged"); at != std::string::npos; at = output.find("DeviceChanged", at + 1)) {
      ++changes;
    }
    return changes;
  }

  // Runs the script until it has made `changes` changes, waits for `moment`, and kills the program. Returns false when the
  // program ended before that, or never made so many changes.
  bool RunAndKill(int changes, const std::function<void()>& moment) {
    Background program({ProgramPath("devhost"), "run", "--project", folder.Path("project.xml"), "--state",
                        folder.Path("state"), folder.Path("changes.devhost")},
                       {}, folder.Path("output"));
    const bool there = Eventually([this, &program, changes] { return Changes() >= changes || program.Ended(); });
    moment();
    return program.Kill() && there;
  }

  // Waits until a random moment. This is not a wait for an event: the random moment is what the test is about.
  void Linger() { std::this_thread::sleep_for(std::chrono::microseconds(m_later(random))); }
  // Waits until the temporary file is there, if it can be caught: it exists only for microseconds.
  void AwaitWrite() const {
    for (int look = 0; look != 100000 && !exists(folder.Path("kitchen/.snmpd.conf.new")); ++look) {
    }
  }
  // Waits until the file was changed.
  void AwaitNewFile() const {
    const FileMark before = Mark();
    for (int look = 0; look != 100000 && Mark() == before; ++look) {
    }
  }

  // Reaps the daemons that the program left to this process, which die soon, and returns how many there were. A daemon that
  // keeps running is a failure, and is killed.
  static int ReapDaemons() {
    int daemons = 0;
    const auto none = [&daemons] {
      pid_t reaped = 0;
      while ((reaped = ::waitpid(-1, nullptr, WNOHANG)) > 0) {
        ++daemons;
      }
      return reaped < 0;
    };
    if (!Eventually(none)) {
      ADD_FAILURE() << "a daemon is left running";
      std::ifstream children("/proc/thread-self/children");
      for (pid_t child = 0; children >> child;) {
        ::kill(child, SIGKILL);
      }
      Eventually(none);
    }
    return daemons;
  }

  std::minstd_rand random{std::random_device{}()};

 private:
  // Shows whether a file was changed: its inode, its size, and when it was written.
  using FileMark = std::tuple<ino_t, off_t, time_t, long>;
  FileMark Mark() const {
    struct stat file = {};
    ::stat(folder.Path("kitchen/snmpd.conf").c_str(), &file);
    return {file.st_ino, file.st_size, file.st_mtim.tv_sec, file.st_mtim.tv_nsec};
  }

  std::uniform_int_distribution<int> m_later{0, 30000};
};

TEST_F(AHostThatIsKilled, LeavesNoDaemonAndAnOldOrANewFileAndStartsAgain) {
  const std::set<std::string> possible = PossibleFiles();
  ASSERT_EQ(possible.size(), 3U);
  std::uniform_int_distribution<int> change(0, 20);
  int daemons = 0;
  int interrupted = 0;
  for (int kill = 0; kill != 12; ++kill) {
    const int after = change(random);
    const auto moment = [this, kill] { kill % 3 == 0 ? Linger() : kill % 3 == 1 ? AwaitWrite() : AwaitNewFile(); };
    ASSERT_TRUE(RunAndKill(after, moment)) << folder.Read("output");
    daemons += ReapDaemons();
    ASSERT_FALSE(HasFailure()) << "killed after " << after << " changes";
    ASSERT_LT(Changes(), kRequests);
    ASSERT_FALSE(exists(folder.Path("state/driver-12.xml.damaged")));
    interrupted += exists(folder.Path("kitchen/.snmpd.conf.new")) ? 1 : 0;
    ASSERT_EQ(possible.count(WithoutTime(File(kKitchen))), 1U) << "killed after " << after << " changes: " << File(kKitchen);
  }
  std::cout << daemons << " daemons ended with the host, " << interrupted << " writes interrupted\n";
  EXPECT_GT(daemons, 0) << "no daemon was running at any kill";
  LoadAgent();
  LoadDevice(kKitchen);
  Serve(kKitchen, Change("last"));
  EXPECT_EQ(As("readlast").Get(kSysName).value, "last");
  EXPECT_EQ(As("owner").Get(kSysContact).value, std::string(200, 'l'));
  EXPECT_FALSE(exists(folder.Path("kitchen/.snmpd.conf.new")));
}

}  // namespace
}  // namespace e2e

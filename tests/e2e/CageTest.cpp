// Ways that led a daemon to a second port, to another user's files, or past the end of its host. After each, the daemon has
// one port, and no process is left when it is stopped.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "tests/e2e/OpenPorts.h"
#include "tests/e2e/RealSystem.h"
#include "tests/e2e/Wait.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kExtends[] = ".1.3.6.1.4.1.8072.1.3.2";
constexpr char kReadAgain[] = ".1.3.6.1.4.1.2021.100.11.0";
constexpr char kStartAgain[] = ".1.3.6.1.4.1.2021.100.12.0";
constexpr char kDebug[] = ".1.3.6.1.4.1.8072.1.7.1.1.0";
constexpr char kNewModule[] = ".1.3.6.1.4.1.2021.13.14.2.1.5.1";

class ACage : public ARealSystem {
 protected:
  ACage() { folder.Write("bad.conf", Bad()); }

  // For files that are included as they should be.
  std::string OnlyPortAndUser() const { return "agentaddress udp:127.0.0.1:" + m_port + "\nagentuser nobody\n"; }
  // For files that must not be read at all.
  std::string Bad() const {
    return OnlyPortAndUser() + "extend evil /usr/bin/touch " + folder.Path("owned") + "\nsysName outside\n";
  }

  void Serve(const std::string& file) {
    Begin(file);
    Settings settings;
    settings.read = "public";
    settings.write = "writer";
    ARealSystem::Serve(kKitchen, settings);
  }

  // The processes that work in the test's folder.
  std::vector<std::string> Processes() {
    std::vector<std::string> found;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
      std::error_code gone;
      const std::string place = fs::read_symlink(entry.path() / "cwd", gone).string();
      if (!gone && place.rfind(folder.Path(""), 0) == 0) {
        found.push_back(entry.path().filename().string());
      }
    }
    return found;
  }

  // One port, the settings, nothing of the bad file, and no process after the end.
  void Check() {
    const Daemon daemon = GetDaemon(kKitchen);
    ASSERT_TRUE(daemon.running) << testing::PrintToString(Log());
    EXPECT_THAT(OpenPorts(daemon.pid), ElementsAre("udp" + daemon.address.substr(daemon.address.rfind(':'))));
    EXPECT_EQ(As("public").Get(kSysObjectId).error, "");
    EXPECT_NE(As("public").Get(kSysName).value, "outside");
    EXPECT_THAT(As("writer").Walk(kExtends), testing::Not(Contains(testing::Key(HasSubstr("101.118.105.108")))));
    EXPECT_FALSE(fs::exists(folder.Path("owned")));
    EXPECT_THAT(Processes(), ElementsAre(std::to_string(daemon.pid)));
    EXPECT_EQ(Action(kKitchen, "StopMasterAgent"), "<Success/>");
    EXPECT_THAT(Processes(), testing::IsEmpty());
  }

  const std::string m_port = FreePort();
};

TEST_F(ACage, HoldsAgainstSearchesForFiles) {
  for (const char* const name : {"x.conf", "x.local.conf", "x.0.conf", "x", "x.conf.conf"}) {
    folder.Write("kitchen/daemon/data/" + std::string(name), Bad());
    folder.Write("kitchen/daemon/kept/" + std::string(name), Bad());
  }
  Serve("includeSearch ../../../bad\nincludeSearch x\nincludeSearch x.conf\nincludeSearch x.0.conf\nincludeSearch /" +
        folder.Path("bad") + "\nincludeSearch " + folder.Path("bad") + "\ninclude x\n");
  Check();
}

TEST_F(ACage, HoldsAgainstRelativePaths) {
  folder.Write("kitchen/daemon/bad.conf", Bad());
  folder.Write("kitchen/bad.conf", Bad());
  Serve("includeFile bad.conf\nincludeFile ../bad.conf\nincludeDir .\nincludeDir ..\nincludeDir daemon\n");
  Check();
}

// What can be included is, without the lines that lead outside.
TEST_F(ACage, HoldsAgainstFoldersWithABlankBehindThem) {
  folder.Write("parts/a.conf", OnlyPortAndUser() + "sysLocation attic\n");
  Serve("includeDir " + folder.Path("parts") + " \n");
  EXPECT_EQ(As("public").Get(kSysLocation).value, "attic");
  EXPECT_THAT(Log(), Contains(HasSubstr(folder.Path("parts/a.conf") + ":1: agentaddress would open other ports")));
  Check();
}

// The daemon cuts a path off behind 4095 bytes, and finds a file there.
TEST_F(ACage, HoldsAgainstLongPaths) {
  const std::string name = "bad.conf";
  std::string file;
  for (const std::size_t size : {1023U, 4094U, 4095U, 4096U}) {
    const std::string way = folder.Path("");
    file += "includeFile " + way + std::string(size - way.size() - name.size(), '/') + name + std::string(50, 'x') + "\n";
  }
  Serve(file);
  Check();
}

TEST_F(ACage, HoldsAgainstLinks) {
  folder.Write("real/bad.conf", OnlyPortAndUser());
  fs::create_directory_symlink(folder.Path("real"), folder.Path("way"));
  fs::create_symlink(folder.Path("bad.conf"), folder.Path("link.conf"));
  Serve("includeFile " + folder.Path("link.conf") + "\nincludeFile " + folder.Path("real/bad.conf") + "\nincludeFile " +
        folder.Path("way/bad.conf") + "\n");
  EXPECT_THAT(Log(), Contains(HasSubstr("the included file cannot be read: it is a link")));
  Check();
}

TEST_F(ACage, HoldsAgainstPipes) {
  ASSERT_EQ(::mkfifo(folder.Path("pipe.conf").c_str(), 0600), 0);
  folder.Write("bad.conf", OnlyPortAndUser());
  Serve("includeFile " + folder.Path("pipe.conf") + "\nincludeDir " + folder.Path("") + "\n");
  Check();
}

TEST_F(ACage, HoldsAgainstOtherSectionsAndDirectives) {
  folder.Write("outside/snmpd.conf", Bad());
  const std::string outside = folder.Path("outside");
  Serve("[snmp] persistentDir " + outside + "\n[snmp]\npersistentDir " + outside + "\nlogOption f " + folder.Path("owned") +
        "\n[snmpd] agentaddress udp:127.0.0.1:" + m_port + "\n[snmpd]\n\"agentaddress\" udp:127.0.0.1:" + m_port +
        "\nsmuxsocket 127.0.0.1:" + m_port + "\nproxy -Lf " + folder.Path("owned") +
        " -v 2c -c x 127.0.0.1 .1.3.9\ntrapsess -Lf " + folder.Path("owned") +
        " -v 2c -c x 127.0.0.1\n[agentx] agentxsocket udp:127.0.0.1:" + m_port + "\nquit yes\n" +
        "agentXSocket tcp:127.0.0.1:" + m_port + "\nmaster agentx\ndlmod x " + folder.Path("x.so") + "\n");
  Check();
}

TEST_F(ACage, HoldsAgainstTextsThatAreSetOverSnmp) {
  Serve("# by hand\n");
  for (const char* const object : {kSysContact, kSysName, kSysLocation}) {
    As("writer").Set(object, "s", "x\n" + Bad() + "[snmp] persistentDir /tmp\nengineBoots 99");
  }
  const std::string stored = folder.Path("kitchen/daemon/data/snmpd.conf");
  ASSERT_TRUE(Eventually([&] {
    return fs::exists(stored) && folder.Read("kitchen/daemon/data/snmpd.conf").find("evil") != std::string::npos;
  }));
  EXPECT_EQ(Action(kKitchen, "RebootController"), "<Success/>");
  EXPECT_EQ(As("public").Get(kSysLocation).value, "x");
  Check();
  EXPECT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
  Check();
}

TEST_F(ACage, HoldsWhenTheDaemonIsToldToReadItsFilesAgain) {
  Serve("# by hand\n");
  const pid_t pid = GetDaemon(kKitchen).pid;
  As("writer").Set(kSysLocation, "s", "x\n" + Bad());
  for (const char* const object : {kReadAgain, kStartAgain, kDebug, kNewModule}) {
    EXPECT_NE(As("writer").Set(object, "i", object == std::string(kNewModule) ? "6" : "1").error, "") << object;
  }
  EXPECT_EQ(GetDaemon(kKitchen).pid, pid);
  Check();
}

}  // namespace
}  // namespace e2e

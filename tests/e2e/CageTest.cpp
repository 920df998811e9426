// Ways that led a daemon to a second port, to another user's files, to programs, or past the end of its host. After each,
// the daemon has one port, and no process is left when it is stopped.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <set>
#include <stdexcept>
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
constexpr char kExecs[] = ".1.3.6.1.4.1.2021.8";
constexpr char kProcs[] = ".1.3.6.1.4.1.2021.2";
constexpr char kReadAgain[] = ".1.3.6.1.4.1.2021.100.11.0";
constexpr char kStartAgain[] = ".1.3.6.1.4.1.2021.100.12.0";
constexpr char kDebug[] = ".1.3.6.1.4.1.8072.1.7.1.1.0";
constexpr char kNewModule[] = ".1.3.6.1.4.1.2021.13.14.2.1.5.1";

class ACage : public ARealSystem {
 protected:
  // A host in a process of its own, with the agent and the kitchen, which waits for its sign to start the daemon.
  class RacingHost {
   public:
    explicit RacingHost(ACage& test) {
      std::array<int, 2> orders = {};
      std::array<int, 2> answers = {};
      if (::pipe2(orders.data(), O_CLOEXEC) != 0 || ::pipe2(answers.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipes");
      }
      m_pid = ::fork();
      if (m_pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::close(orders[1]);
        ::alarm(300);
        test.LoadAgent();
        test.LoadDevice(kKitchen);
        Answer(answers[1], "ready");
        Read(orders[0]);
        test.Action(kKitchen, "StartMasterAgent");
        Answer(answers[1], std::to_string(test.GetDaemon(kKitchen).pid));
        Read(orders[0]);
        test.RestartHost();
        ::_exit(0);
      }
      ::close(orders[0]);
      ::close(answers[1]);
      m_orders = orders[1];
      m_answers = answers[0];
      EXPECT_EQ(Read(m_answers), "ready");
    }
    ~RacingHost() { End(false); }
    RacingHost(const RacingHost&) = delete;
    RacingHost& operator=(const RacingHost&) = delete;

    void Go() const { Answer(m_orders, "go"); }
    // The process of its daemon, "0" when it has none.
    std::string Daemon() const { return Read(m_answers); }
    // Ends it by itself, or kills it.
    void End(bool byItself) {
      if (m_pid <= 0) {
        return;
      }
      if (byItself) {
        Answer(m_orders, "end");
      } else {
        ::kill(m_pid, SIGKILL);
      }
      ::waitpid(m_pid, nullptr, 0);
      ::close(m_orders);
      ::close(m_answers);
      m_pid = -1;
    }

   private:
    static void Answer(int pipe, const std::string& text) {
      EXPECT_EQ(::write(pipe, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    static std::string Read(int pipe) {
      std::array<char, 32> text = {};
      const ssize_t count = ::read(pipe, text.data(), text.size());
      return std::string(text.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }

    pid_t m_pid = -1;
    int m_orders = -1;
    int m_answers = -1;
  };

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
  EXPECT_THAT(Log(), Contains(HasSubstr(folder.Path("parts/a.conf") + ":1: this directive would open other ports")));
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

// A program would run with the rights of the host when somebody asks for its value, or at once.
TEST_F(ACage, HoldsAgainstLinesThatRunPrograms) {
  const std::string touch = "/usr/bin/touch " + folder.Path("owned") + "\n";
  std::string lines;
  for (const char* const begin :
       {"extend evil ", "extend .1.3.9.1 evil ", "[snmpd] extend evil2 ", "\"extend\" evil3 ", "EXTEND -cacheTime 0 evil4 ",
        "extendfix evil ", "extend-sh evil5 ", "exec evil6 ", "exec .1.3.9.2 evil6 ", "execfix evil6 ", "sh evil7 ",
        "sh .1.3.9.3 evil7 ", "pass .1.3.9.4 ", "pass -p 1 .1.3.9.5 ", "pass_persist .1.3.9.6 ", "procfix nobodyhasthis "}) {
    lines += begin + touch;
  }
  folder.Write("programs.conf", lines);
  Serve("proc nobodyhasthis 9 1\n" + lines + "includeFile " + folder.Path("programs.conf") + "\n");
  for (const char* const object : {kExtends, kExecs, kProcs}) {
    As("writer").Walk(object);
  }
  for (int number = 1; number <= 6; ++number) {
    EXPECT_NE(As("writer").Get(".1.3.9." + std::to_string(number) + ".1.1").error, "");
  }
  // What fixes a process, what fixes a value, and a new line over SNMP.
  As("writer").Set(std::string(kProcs) + ".1.102.1", "i", "1");
  As("writer").Set(std::string(kExecs) + ".1.102.1", "i", "1");
  As("writer").Set(std::string(kExtends) + ".2.1.2.1.98", "s", "/usr/bin/touch");
  As("writer").Set(std::string(kExtends) + ".2.1.3.1.98", "s", folder.Path("owned"));
  As("writer").Set(std::string(kExtends) + ".2.1.21.1.98", "i", "4");
  As("writer").Walk(kExtends);
  EXPECT_THAT(Log(), Contains(HasSubstr(":1: this directive would run a program; the daemon does not get this line")));
  Check();
}

// Only the daemon's folder, which is closed to others, holds what the daemon reads.
TEST_F(ACage, HoldsNothingWhereOthersMayWrite) {
  Serve("# by hand\n");
  std::set<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder.Path("kitchen"))) {
    names.insert(entry.path().filename().string());
  }
  EXPECT_THAT(names, ElementsAre("daemon", "snmpd.conf"));
  EXPECT_EQ(fs::status(folder.Path("kitchen/daemon")).permissions(), fs::perms::owner_all);
  Check();
}

// Two hosts start the daemon of one folder at the same time.
TEST_F(ACage, HasOneDaemonHoweverManyHostsStartIt) {
  MakeDevice(kKitchen, "rocommunity public\n");
  for (int round = 0; round != 15; ++round) {
    std::array<RacingHost, 2> hosts = {RacingHost(*this), RacingHost(*this)};
    for (RacingHost& each : hosts) {
      each.Go();
    }
    const std::array<std::string, 2> daemons = {hosts[0].Daemon(), hosts[1].Daemon()};
    ASSERT_NE(daemons[0] == "0", daemons[1] == "0") << daemons[0] << " and " << daemons[1] << " in round " << round;
    const std::string pid = daemons[0] == "0" ? daemons[1] : daemons[0];
    EXPECT_THAT(Processes(), ElementsAre(pid));
    EXPECT_EQ(OpenPorts(static_cast<pid_t>(std::stol(pid))).size(), 1U);
    hosts[0].End(round % 2 == 0);
    hosts[1].End(round % 2 == 0);
    EXPECT_TRUE(Eventually([this] { return Processes().empty(); })) << "round " << round;
    ASSERT_FALSE(HasFailure());
  }
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

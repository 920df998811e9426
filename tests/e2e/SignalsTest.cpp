// Ends the real program with each signal while it works, and looks for what is left: processes, and files with secrets.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/e2e/Background.h"
#include "tests/e2e/RealSystem.h"
#include "tests/e2e/Wait.h"
#include "tests/e2e/World.h"
#include "tests/support/ScratchFolder.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;

// What a command does, and the program that holds it up in the middle.
struct Work {
  const char* name;
  const char* program;             // run instead of the one that the command would run
  std::vector<std::string> words;  // after "devhost"
  std::size_t processes;           // in the middle: the two of devhost, two keepers a program, programs and their children
};

std::ostream& operator<<(std::ostream& stream, const Work& work) {
  return stream << work.name;
}

// A program that never ends, with a child, and one that has left its group, its session and its parent. Nothing else ends
// when a shell does.
constexpr char kHold[] =
    "#!/bin/sh\n"
    "stty -echo </dev/tty 2>/dev/null\n"
    "sleep 1000 &\n"
    "(setsid sleep 1000 &)\n"
    ": >\"$SIGNALS_TEST/ready\"\n"
    "wait\n";

constexpr char kSecret[] = "geheim";

class AWorkInterrupted : public testing::Test {
 protected:
  AWorkInterrupted() {
    for (const char* const place : {"tmp,a", "programs"}) {
      fs::create_directory(folder.Path(place));
    }
    Settings settings;
    settings.read = "geheim1";
    settings.traps = {TrapTarget("127.0.0.1", "geheim2", "9")};
    inputs = {folder.Write("check,me.conf", "rocommunity geheim3\ncreateUser u SHA geheim4567 AES geheim5678\n"),
              folder.Write("kitchen/snmpd.conf", "rwcommunity geheim6\n"),
              folder.Write("settings.xml", SettingsElement(12, settings))};
    folder.Write("project.xml",
                 "<project>\n<driver id='1' name='agent' module='snmp_configuration_agent.so'/>\n"
                 "<driver id='12' name='kitchen' module='local_snmpd.so'><config folder='{project}/kitchen'/></driver>\n"
                 "</project>\n");
    folder.Write("hold.devhost", "run programs/hold\n");
    folder.Write("serve.devhost",
                 "load-project\ncommand SetDeviceState xml=@settings.xml\ncommand StartMasterAgent deviceId=12\n"
                 "run programs/hold\n");
  }
  ~AWorkInterrupted() override {
    for (const pid_t left : Processes()) {
      ::kill(left, SIGKILL);
    }
  }

  std::vector<std::string> Words(const Work& work) const {
    const std::string program = folder.Write(std::string("programs/") + work.program, kHold);
    ::chmod(program.c_str(), 0755);
    std::vector<std::string> words = {ProgramPath("devhost")};
    for (const std::string& word : work.words) {
      words.push_back(fs::is_regular_file(folder.Path(word)) ? folder.Path(word) : word);
    }
    return words;
  }

  // All processes that carry the mark of this test, which every process inherits.
  std::vector<pid_t> Processes() const {
    const std::string mark = std::string("SIGNALS_TEST=") + folder.Path() + '\0';
    std::vector<pid_t> processes;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
      const pid_t process = std::atoi(entry.path().filename().c_str());
      try {
        const bool carriesIt =
            process > 0 && testsupport::ScratchFolder::ReadFile(entry.path() / "environ").find(mark) != std::string::npos;
        if (carriesIt) {
          processes.push_back(process);
        }
      } catch (const std::exception&) {
        // It is another user's, or has just ended.
      }
    }
    return processes;
  }

  // The files in the folder, besides those that the test wrote, that hold a secret.
  std::vector<std::string> FilesWithSecrets() const {
    std::vector<std::string> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.Path())) {
      const std::string path = entry.path();
      const bool isInput = std::find(inputs.begin(), inputs.end(), path) != inputs.end();
      if (entry.is_regular_file() && !isInput &&
          testsupport::ScratchFolder::ReadFile(path).find(kSecret) != std::string::npos) {
        found.push_back(path);
      }
    }
    return found;
  }

  bool IsInTheMiddle() const { return fs::exists(folder.Path("ready")); }

  void ExpectNothingLeft() const {
    EXPECT_TRUE(Eventually([this] { return Processes().empty(); }));
    EXPECT_EQ(FilesWithSecrets(), std::vector<std::string>());
    EXPECT_TRUE(fs::is_empty(folder.Path("tmp,a")));
  }

  testsupport::ScratchFolder folder;
  std::vector<std::string> inputs;
};

const Work kWorks[] = {
    {"Check", "snmpd", {"check", "--daemon", "check,me.conf"}, 7},
    {"Preview", "diff", {"preview", "--project", "project.xml", "kitchen", "settings.xml"}, 7},
    {"Run", "hold", {"run", "--project", "project.xml", "hold.devhost"}, 7},
    {"Serve", "hold", {"run", "--project", "project.xml", "serve.devhost"}, 10},
};

// Where core files are allowed: one of them is a file with secrets.
class AWork : public AWorkInterrupted, public testing::WithParamInterface<std::tuple<Work, int>> {
 protected:
  AWork() {
    ::getrlimit(RLIMIT_CORE, &m_before);
    const struct rlimit most = {m_before.rlim_max, m_before.rlim_max};
    ::setrlimit(RLIMIT_CORE, &most);
  }
  ~AWork() override { ::setrlimit(RLIMIT_CORE, &m_before); }

 private:
  struct rlimit m_before = {};
};

TEST_P(AWork, EndedByASignalLeavesNoProcessAndNoSecret) {
  const auto& [work, signal] = GetParam();
  Background program(Words(work),
                     {{"SIGNALS_TEST", folder.Path()},
                      {"TMPDIR", folder.Path("tmp,a")},
                      // A sanitizer that takes a signal makes an exit status of it.
                      {"ASAN_OPTIONS", "handle_segv=0:handle_sigbus=0:handle_sigfpe=0"},
                      {"PATH", folder.Path("programs") + ":/usr/sbin:/usr/bin:/bin"}},
                     folder.Path("output"));
  ASSERT_TRUE(Eventually([&] { return IsInTheMiddle() || program.Ended(); }));
  ASSERT_TRUE(IsInTheMiddle()) << folder.Read("output");
  const std::size_t expected = work.processes;
  EXPECT_TRUE(Eventually([&] { return Processes().size() == expected; })) << Processes().size();
  for (const pid_t process : Processes()) {
    struct rlimit core = {};
    ::prlimit(process, RLIMIT_CORE, nullptr, &core);
    EXPECT_LE(core.rlim_cur, 1U) << process;
  }
  const int status = program.End(signal);
  EXPECT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), signal);
  EXPECT_FALSE(WCOREDUMP(status));
  ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Signals, AWork,
                         testing::Combine(testing::ValuesIn(kWorks),
                                          testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGKILL, SIGPIPE, SIGTERM)));

// Each of these writes a core file by default.
INSTANTIATE_TEST_SUITE_P(Crashes, AWork,
                         testing::Combine(testing::Values(kWorks[0], kWorks[3]),
                                          testing::Values(SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP, SIGXCPU,
                                                          SIGXFSZ)));

// A shell says the same as the system.
TEST_F(AWorkInterrupted, GivesAShellTheStatusOfItsSignal) {
  std::string words;
  for (const std::string& word : Words(kWorks[2])) {
    words += " '" + word + "'";
  }
  const Background shell(
      {"/bin/sh", "-c", words + " & echo $! >pid.new; mv pid.new pid; wait $!; echo $? >status.new; mv status.new status"},
      {{"SIGNALS_TEST", folder.Path()}, {"PWD", folder.Path()}}, folder.Path("output"));
  ASSERT_TRUE(Eventually([this] { return IsInTheMiddle() && fs::exists("pid"); })) << folder.Read("output");
  ::kill(std::stoi(testsupport::ScratchFolder::ReadFile("pid")), SIGTERM);
  ASSERT_TRUE(Eventually([] { return fs::exists("status"); }));
  EXPECT_EQ(testsupport::ScratchFolder::ReadFile("status"), "143\n");
  fs::remove("pid");
  fs::remove("status");
}

// The keys of a terminal send their signals to the foreground, and a program must not change how it behaves.
class ATerminal : public AWorkInterrupted, public testing::WithParamInterface<std::tuple<char, int>> {
 protected:
  // Reads what the terminal shows, until the other end is closed.
  void Read(std::string& shown) const {
    struct pollfd watched = {terminal, POLLIN, 0};
    char block[4096];
    ssize_t count = 0;
    while (::poll(&watched, 1, 0) > 0 && (count = ::read(terminal, block, sizeof block)) > 0) {
      shown.append(block, static_cast<std::size_t>(count));
    }
  }

  int terminal = -1;
};

TEST_P(ATerminal, IsAsItWasAfterAKeyThatEndsTheProgram) {
  const auto& [key, signal] = GetParam();
  std::vector<std::string> words = Words(kWorks[2]);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::setenv("SIGNALS_TEST", folder.Path().c_str(), 1);
    ::setenv("TERM", "xterm", 1);
    ::unsetenv("NO_COLOR");
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  struct termios before = {};
  ASSERT_EQ(::tcgetattr(terminal, &before), 0);
  std::string shown;
  ASSERT_TRUE(Eventually([&] {
    Read(shown);
    return IsInTheMiddle();
  })) << shown;
  ASSERT_EQ(::write(terminal, &key, 1), 1);
  int status = 0;
  ASSERT_TRUE(Eventually([&] {
    Read(shown);
    return ::waitpid(child, &status, WNOHANG) == child;
  }));
  Read(shown);
  EXPECT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), signal);
  struct termios after = {};
  ASSERT_EQ(::tcgetattr(terminal, &after), 0);
  EXPECT_EQ(after.c_lflag, before.c_lflag);
  EXPECT_EQ(after.c_iflag, before.c_iflag);
  EXPECT_EQ(after.c_oflag, before.c_oflag);
  const std::size_t lastColor = shown.rfind("\x1b[");
  ASSERT_NE(lastColor, std::string::npos) << shown;
  EXPECT_EQ(shown.substr(lastColor, 4), "\x1b[0m") << shown;
  ::close(terminal);
  ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Keys, ATerminal,
                         testing::Values(std::make_tuple('\x03', SIGINT), std::make_tuple('\x1c', SIGQUIT)));

}  // namespace
}  // namespace e2e

#include "devhost/console/HostProcess.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <array>

namespace devhost {
namespace {

// A shell as the process.
struct Shell {
  explicit Shell(const std::string& script) : process("/bin/sh", {"sh", "-c", script}) {}

  // What it writes until its end.
  std::string Read() const {
    std::string text;
    std::array<char, 4096> block{};
    for (;;) {
      struct pollfd ready = {process.Output(), POLLIN, 0};
      if (::poll(&ready, 1, 20'000) != 1) {
        return text + "(nothing more came)";
      }
      const ssize_t count = ::read(process.Output(), block.data(), block.size());
      if (count <= 0) {
        return text;
      }
      text.append(block.data(), static_cast<std::size_t>(count));
    }
  }
  void AwaitEnd() {
    for (int i = 0; i < 2000 && !process.HasEnded(); ++i) {
      ::usleep(10'000);
    }
  }

  HostProcess process;
};

TEST(AHostProcess, ReadsAndWritesPipes) {
  Shell shell("read line; echo got $line; echo wrong >&2");
  ASSERT_EQ(::write(shell.process.Input(), "this\n", 5), 5);
  EXPECT_EQ(shell.Read(), "got this\n");
  shell.AwaitEnd();
  std::array<char, 64> errors{};
  EXPECT_EQ(::read(shell.process.Errors(), errors.data(), errors.size()), 6);
  EXPECT_EQ(shell.process.ExitStatus(), 0);
}

TEST(AHostProcess, SeesTheEndOfItsInput) {
  Shell shell("cat; echo end");
  shell.process.CloseInput();
  EXPECT_EQ(shell.Read(), "end\n");
}

TEST(AHostProcess, InheritsNoDescriptor) {
  const int open = ::open("/dev/null", O_RDONLY);  // without O_CLOEXEC, as a library might open one
  Shell shell("ls /proc/self/fd | wc -l");
  EXPECT_EQ(shell.Read(), "4\n") << "standard ones, and the one of ls";
  ::close(open);
}

// A terminal sends its signals to the group of the console.
TEST(AHostProcess, IsInASessionOfItsOwn) {
  Shell shell("cut -d ' ' -f 6 /proc/$$/stat; cut -d ' ' -f 5 /proc/$$/stat");
  const std::string own = std::to_string(shell.process.Pid());
  EXPECT_EQ(shell.Read(), own + "\n" + own + "\n");
}

TEST(AHostProcess, IsKilledWithWhatItStarted) {
  Shell shell("sleep 1000 & echo $!; wait");
  std::array<char, 32> line{};
  for (int i = 0; i < 2000 && ::read(shell.process.Output(), line.data(), line.size()) <= 0; ++i) {
    ::usleep(10'000);
  }
  shell.process.Kill();
  shell.AwaitEnd();
  EXPECT_TRUE(shell.process.HasEnded());
  EXPECT_EQ(shell.process.HowItEnded(), "the host process was ended by SIGKILL");
  EXPECT_EQ(shell.process.ExitStatus(), 1);
  EXPECT_EQ(shell.Read(), "") << "the other one holds the pipe while it lives";
}

TEST(AHostProcess, SaysItsExitStatus) {
  Shell shell("exit 7");
  shell.AwaitEnd();
  EXPECT_EQ(shell.process.HowItEnded(), "the host process ended with exit status 7");
  EXPECT_EQ(shell.process.ExitStatus(), 7);
}

TEST(AHostProcess, IsGoneWithItsObject) {
  pid_t pid = 0;
  {
    Shell shell("sleep 1000");
    pid = shell.process.Pid();
  }
  EXPECT_EQ(::kill(pid, 0), -1);
}

TEST(AHostProcessThatCannotStart, IsAnError) {
  EXPECT_THROW(HostProcess("/no/such/program", {"x"}), std::system_error);
}

}  // namespace
}  // namespace devhost

// A session on a terminal, as somebody types it.
#include <gmock/gmock.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>

#include "devhost/system/FileDescriptor.h"
#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

class Terminal {
 public:
  explicit Terminal(const std::string& project) {
    int terminal = -1;
    m_child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (m_child == 0) {
      ::setenv("TERM", "xterm", 1);
      ::alarm(300);
      ::execl(DEVHOST_PROGRAM, DEVHOST_PROGRAM, "shell", "--color", "never", "--project", project.c_str(), nullptr);
      ::_exit(127);
    }
    m_terminal = FileDescriptor(terminal);
  }

  ~Terminal() {
    if (m_child > 0) {
      ::kill(m_child, SIGKILL);
      ::waitpid(m_child, nullptr, 0);
    }
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void Type(const std::string& keys) {
    ASSERT_EQ(::write(m_terminal.Get(), keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  // Waits until the screen shows that text behind what was found before, and forgets all up to it.
  bool Shows(const std::string& text) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (;;) {
      const std::size_t found = m_screen.find(text);
      if (found != std::string::npos) {
        m_screen.erase(0, found + text.size());
        return true;
      }
      struct pollfd ready = {m_terminal.Get(), POLLIN, 0};
      char block[4096];
      const bool isLate = std::chrono::steady_clock::now() > deadline;
      const ssize_t got = isLate || ::poll(&ready, 1, 1000) < 0 ? -1
                          : ready.revents == 0                  ? 0
                                                                : ::read(m_terminal.Get(), block, sizeof block);
      if (got < 0 || (got == 0 && ready.revents != 0)) {
        ADD_FAILURE() << "the screen does not show \"" << text << "\" but: " << m_screen;
        return false;
      }
      m_screen.append(block, static_cast<std::size_t>(got));
    }
  }

  // Waits for the end of the program and returns its exit status.
  int End() {
    int status = -1;
    ::waitpid(m_child, &status, 0);
    m_child = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t m_child = -1;
  FileDescriptor m_terminal;
  std::string m_screen;
};

class ASessionOnATerminal : public CommandsFixture {
 protected:
  void SetUp() override {
#ifndef DEVHOST_LINE_EDITOR
    GTEST_SKIP() << "built without a library for editing lines";
#endif
    folder.Write("kitchen/snmpd.conf", "");
    project =
        File("project.xml",
             "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/>"
             "<driver id='12' name='kitchen' module='simulated_device.so'><config folder='{project}/kitchen'/></driver>"
             "</project>");
  }

  std::string project;
};

TEST_F(ASessionOnATerminal, HasAPromptAndEndsWithTheInput) {
  Terminal terminal(project);
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type(
      "print K\xC3\xBC"
      "che\n");
  EXPECT_TRUE(
      terminal.Shows("\nprint K\xC3\xBC"
                     "che\r\n"));
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("\x04");
  EXPECT_TRUE(terminal.Shows("unload agent"));
  EXPECT_EQ(terminal.End(), 0);
}

TEST_F(ASessionOnATerminal, CompletesWordsAndDrivers) {
  Terminal terminal(project);
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("dev\tki\tsh\tcou\t\n");
  EXPECT_TRUE(terminal.Shows("\ncounts kitchen CopyFrom=0"));
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("device kitchen o\t\t");
  EXPECT_TRUE(terminal.Shows("offline  online"));
  terminal.Type("\x03\x04");
  EXPECT_TRUE(terminal.Shows("unload agent"));
  EXPECT_EQ(terminal.End(), 0);
}

TEST_F(ASessionOnATerminal, CompletesCommandsAndDeviceIds) {
  Terminal terminal(project);
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("com\tAddM\tdev\t\t");
  EXPECT_TRUE(terminal.Shows("deviceId=1  deviceId=12"));
  terminal.Type("2\n");
  EXPECT_TRUE(terminal.Shows("\ncommand agent AddManagedDevice deviceId=12"));
  EXPECT_TRUE(terminal.Shows("<ManagedDeviceAdded><id>12</id>"));
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("device 12\tsho\tcou\t\n");
  EXPECT_TRUE(terminal.Shows("\ncounts kitchen CopyFrom=0"));
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("\x04");
  EXPECT_TRUE(terminal.Shows("unload agent"));
  EXPECT_EQ(terminal.End(), 0);
}

TEST_F(ASessionOnATerminal, ClearsTheLineAtCtrlC) {
  Terminal terminal(project);
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("print wrong\x03print right\n");
  EXPECT_TRUE(terminal.Shows("\nprint right\r\n"));
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("\x04");
  EXPECT_EQ(terminal.Shows("unload agent") ? terminal.End() : -1, 0);
}

TEST_F(ASessionOnATerminal, TakesKeysThatAreTypedWhileALineIsPlayed) {
  const std::string pipe = folder.Path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  Terminal terminal(project);
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("run cat " + pipe + "\n");
  // Opened as soon as the program reads it.
  std::ofstream input(pipe);
  terminal.Type("print typed ahead\n\x04");
  input.close();
  EXPECT_TRUE(terminal.Shows("\nprint typed ahead\r\n"));
  EXPECT_EQ(terminal.Shows("unload agent") ? terminal.End() : -1, 0);
}

TEST_F(ASessionOnATerminal, BringsEarlierLinesBack) {
  Terminal terminal(project);
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("print first\n");
  ASSERT_TRUE(terminal.Shows("\nprint first\r\n"));
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("\x10 again\n");
  EXPECT_TRUE(terminal.Shows("\nprint first again\r\n"));
  ASSERT_TRUE(terminal.Shows("devhost> "));
  terminal.Type("\x04");
  EXPECT_EQ(terminal.Shows("unload agent") ? terminal.End() : -1, 0);
}

}  // namespace
}  // namespace devhost

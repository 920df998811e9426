#include "drivers/localsnmpd/DaemonProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "devhost/system/FileDescriptor.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/Processes.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using devhost::FileDescriptor;
using drivers::DaemonProcess;

const std::chrono::milliseconds kLong(30000);
const std::chrono::milliseconds kNow(0);

class ADaemonProcess : public testing::Test {
 protected:
  ADaemonProcess()
      : m_directory(::open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
        m_output(::open(m_folder.Path("output").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {}

  std::unique_ptr<DaemonProcess> Start(const std::string& program, const std::vector<std::string>& arguments) {
    return DaemonProcess::Start(
        {program, arguments, {"PATH=/usr/bin:/bin", "COLOUR=red"}, m_directory.Get(), m_output.Get()}, m_error);
  }
  std::unique_ptr<DaemonProcess> Shell(const std::string& script) { return Start("/bin/sh", {"-c", script}); }
  // The output of a script, after its end.
  std::string Output(const std::string& script) {
    const auto process = Shell(script);
    EXPECT_TRUE(process->WaitForEnd(kLong));
    EXPECT_EQ("exit status 0", process->DescribeEnd());
    return m_folder.Read("output");
  }

  TemporaryFolder m_folder;
  FileDescriptor m_directory;
  FileDescriptor m_output;
  int m_error = 0;
};

TEST_F(ADaemonProcess, RunsWithItsArgumentsEnvironmentAndFolder) {
  EXPECT_EQ("red " + m_folder.Path() + "\n", Output("echo $COLOUR $(pwd -P)"));
}

TEST_F(ADaemonProcess, WritesBothOutputsToItsFileAndReadsNothing) {
  EXPECT_EQ("one\ntwo\n", Output("echo one; echo two >&2; cat"));
}

TEST_F(ADaemonProcess, HasNoSignalSettingsOfTheHost) {
  sigset_t mask;
  sigset_t former;
  ::sigemptyset(&mask);
  ::sigaddset(&mask, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &mask, &former);
  const auto formerHandler = ::signal(SIGHUP, SIG_IGN);
  // Without a shell, which would set some of this right itself. The lines: signals blocked, signals ignored.
  const auto process = Start("/bin/grep", {"-E", "Sig(Blk|Ign)", "/proc/self/status"});
  ::signal(SIGHUP, formerHandler);
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n", m_folder.Read("output"));
}

TEST_F(ADaemonProcess, HasNoDescriptorsOfTheHostAndKeepsItsFilesToItself) {
  const FileDescriptor open(::open("/dev/null", O_RDONLY));
  // ls has one descriptor of its own, for the folder.
  EXPECT_EQ("0\n1\n2\n3\n0077\n", Output("ls /proc/self/fd; umask"));
}

TEST_F(ADaemonProcess, SaysHowItEnded) {
  const auto ended = Shell("exit 3");
  EXPECT_TRUE(ended->WaitForEnd(kLong));
  EXPECT_EQ("exit status 3", ended->DescribeEnd());
  const auto killed = Shell("sleep 1000");
  EXPECT_FALSE(killed->WaitForEnd(kNow));
  killed->Signal(SIGTERM);
  EXPECT_TRUE(killed->WaitForEnd(kLong));
  EXPECT_EQ("killed by signal 15 (SIGTERM)", killed->DescribeEnd());
}

TEST_F(ADaemonProcess, IsReapedAtOnceAndGetsNoSignalAfterThat) {
  const auto process = Shell("exit 0");
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ(-1, ::kill(process->GetPid(), 0));
  EXPECT_EQ(ESRCH, errno);
  process->Signal(SIGKILL);
  EXPECT_EQ("exit status 0", process->DescribeEnd());
}

TEST_F(ADaemonProcess, ThatTheSystemReapsEndsAllTheSame) {
  const auto former = ::signal(SIGCHLD, SIG_IGN);
  const auto process = Shell("exit 3");
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ("its exit status is unknown", process->DescribeEnd());
  ::signal(SIGCHLD, former);
}

TEST_F(ADaemonProcess, IsKilledAndReapedWithItsObject) {
  auto process = Shell("trap '' TERM; echo ready; while :; do sleep 1000; done");
  const pid_t pid = process->GetPid();
  EXPECT_TRUE(IsAlive(pid));
  process.reset();
  EXPECT_EQ(-1, ::kill(pid, 0));
}

TEST_F(ADaemonProcess, LivesOnWhenTheThreadThatAskedForItEnds) {
  std::unique_ptr<DaemonProcess> process;
  ASSERT_EQ(0, ::mkfifo(m_folder.Path("pipe").c_str(), 0600));
  std::thread([&] { process = Shell("read line < pipe; exit 7"); }).join();
  // It waits for a writer; a killed one would never read this.
  m_folder.Write("pipe", "go on\n");
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ("exit status 7", process->DescribeEnd());
}

TEST_F(ADaemonProcess, DiesWithAHostThatIsKilled) {
  Child host([this] {
    const auto process = Shell("echo $$; exec sleep 1000");
    return process->WaitForEnd(kLong) ? 1 : 2;
  });
  ASSERT_TRUE(Eventually([this] { return m_folder.Read("output").find('\n') != std::string::npos; }));
  const pid_t pid = std::stoi(m_folder.Read("output"));
  EXPECT_TRUE(IsAlive(pid));
  host.Kill();
  EXPECT_EQ(std::nullopt, host.Result());
  EXPECT_TRUE(Eventually([pid] { return !IsAlive(pid); }));
}

TEST_F(ADaemonProcess, ThatCannotBeStartedSaysWhyAndLeavesNothing) {
  EXPECT_EQ(nullptr, Start("/no/program", {}));
  EXPECT_EQ(ENOENT, m_error);
  m_folder.Write("text", "no program");
  EXPECT_EQ(nullptr, Start(m_folder.Path("text"), {}));
  EXPECT_EQ(EACCES, m_error);
  ASSERT_EQ(0, ::chmod(m_folder.Path("text").c_str(), 0755));
  EXPECT_EQ(nullptr, Start(m_folder.Path("text"), {}));
  EXPECT_EQ(ENOEXEC, m_error);
  EXPECT_EQ(0U, CountChildren());
}

}  // namespace

// A controller behind bad lines: slow, cut at any byte, silent, dead.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <iostream>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "devhost/system/FileDescriptor.h"
#include "drivers/common/OffLineStatus.h"
#include "drivers/sshsnmpd/Controller.h"
#include "drivers/sshsnmpd/SshStatus.h"
#include "drivers/sshsnmpd/TcpSocket.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/Processes.h"
#include "tests/drivers/support/SmallDisk.h"
#include "tests/drivers/support/SshServer.h"
#include "tests/drivers/support/TcpProxy.h"

namespace {

using devhost::FileDescriptor;
using drivers::Controller;
using drivers::SshConfiguration;
using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;
using Lines = std::vector<std::string>;
using Names = std::set<std::string>;
using Way = TcpProxy::Way;

const int kLastPacket = 64;  // bytes
const char kOld[] = "rocommunity old\n";
const seconds kLoaded(30);  // far less than for ever, also on a busy machine
// For what has no deadline of its own in a test: no machine is that busy.
const seconds kPatient(300);
const char kNew[] = "rocommunity new\nsysName kitchen\n";

class AControllerBehindABadLine : public testing::Test {
 protected:
  AControllerBehindABadLine() : m_proxy(m_server.Port()) {
    m_configuration.server = {"127.0.0.1", m_proxy.Port(), m_server.KnownHosts(m_proxy.Port())};
    m_configuration.login = {"controller", m_server.Key()};
    m_configuration.file = m_server.Files().Path("snmpd.conf");
    WriteFile(kOld);
  }

  Controller Make() {
    return Controller(m_configuration, [this](const std::string& line) { m_log.push_back(line); });
  }
  void WriteFile(const std::string& text) const {
    m_server.Files().Write("snmpd.conf", text);
    m_server.GiveFiles();
  }
  std::string File() const { return m_server.Files().Read("snmpd.conf"); }
  bool HasOnlyTheFile() const { return m_server.Files().Names() == Names{"snmpd.conf"}; }
  // How long it took.
  static milliseconds Timed(const std::function<void()>& work) {
    const auto begin = Clock::now();
    work();
    return std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
  }

  // Replaces the file over a connection that is cut that many bytes after the program was asked for.
  void Settle();
  void CutAt(Way way, std::size_t bytes);
  void CutAlong(Way way);

  SshServer m_server;
  TcpProxy m_proxy;
  SshConfiguration m_configuration;
  Lines m_log;
  // What the file was after each cut.
  int m_new = 0;
  int m_old = 0;
  int m_torn = 0;
  int m_tooLate = 0;  // cuts that came after all was done
};

TEST_F(AControllerBehindABadLine, IsReadAndReplacedOverASlowOne) {
  m_proxy.Delay(milliseconds(100));
  m_configuration.connectTimeout = kPatient;
  m_configuration.operationTimeout = kPatient;
  Controller controller = Make();
  std::string text;
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ(kOld, text);
  const milliseconds time = Timed([&] { EXPECT_EQ(0, controller.Replace(kOld, kNew)); });
  EXPECT_EQ(kNew, File());
  // Opening a channel, starting the program, its answer: that many times there and back.
  EXPECT_GE(time, milliseconds(400));
  EXPECT_LT(time, kLoaded);
}

TEST_F(AControllerBehindABadLine, IsReachedOverOneConnectionThatIsKept) {
  Controller controller = Make();
  std::string text;
  for (int count = 0; count < 5; ++count) {
    EXPECT_EQ(0, controller.Read(text));
    EXPECT_EQ(0, controller.RunCommand({"true"}));
  }
  EXPECT_EQ(1U, m_proxy.Connections());
}

TEST_F(AControllerBehindABadLine, IsReachedAnewWhenItHasHungUp) {
  Controller controller = Make();
  std::string text;
  EXPECT_EQ(0, controller.Read(text));
  m_server.Stop();
  m_server.Start();
  EXPECT_EQ(0, controller.RunCommand({"true"}));
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ(2U, m_proxy.Connections());
  EXPECT_EQ(Lines(), m_log);
}

TEST_F(AControllerBehindABadLine, IsOffLineWhileNobodyListensAndSaysSoOnce) {
  Controller controller = Make();
  std::string text;
  m_proxy.Refuse(true);
  EXPECT_EQ(drivers::kControllerOffLine, controller.Read(text));
  EXPECT_EQ(drivers::kControllerOffLine, controller.Replace(kOld, kNew));
  EXPECT_EQ(drivers::kControllerOffLine, controller.RunCommand({"true"}));
  EXPECT_EQ(1U, m_log.size());
  m_proxy.Refuse(false);
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ("the controller " + controller.GetAddress() + " can be reached again", m_log.back());
  EXPECT_EQ(2U, m_log.size());
}

TEST_F(AControllerBehindABadLine, IsOffLineWhenAKeptConnectionGoesSilent) {
  m_configuration.connectTimeout = seconds(1);
  Controller controller = Make();
  std::string text;
  EXPECT_TRUE(Eventually([&] { return controller.Read(text) == 0; }, kPatient));
  m_proxy.Stall(true);
  const milliseconds time = Timed([&] { EXPECT_EQ(drivers::kControllerOffLine, controller.Replace(kOld, kNew)); });
  // Once for the channel, once for a new connection.
  EXPECT_GE(time, seconds(2));
  EXPECT_LT(time, kLoaded);
  EXPECT_EQ(kOld, File());
  m_proxy.Stall(false);
  EXPECT_TRUE(Eventually([&] { return controller.Replace(kOld, kNew) == 0; }, kPatient));
  EXPECT_EQ(kNew, File());
  EXPECT_TRUE(Eventually([this] { return HasOnlyTheFile(); }, kPatient));
}

TEST_F(AControllerBehindABadLine, IsOffLineWhenTheServerStopsAnswering) {
  m_configuration.connectTimeout = seconds(1);
  Controller controller = Make();
  std::string text;
  EXPECT_TRUE(Eventually([&] { return controller.Read(text) == 0; }, kPatient));
  m_server.Signal(SIGSTOP);
  EXPECT_EQ(drivers::kControllerOffLine, controller.Read(text));
  EXPECT_EQ(drivers::kControllerOffLine, controller.RunCommand({"true"}));
  m_server.Signal(SIGCONT);
  EXPECT_TRUE(Eventually([&] { return controller.Read(text) == 0; }, kPatient));
  EXPECT_EQ(kOld, text);
}

TEST_F(AControllerBehindABadLine, IsFoundByItsName) {
  const FileDescriptor byName = drivers::ConnectTcp("localhost", m_server.Port(), drivers::Deadline(kPatient));
  EXPECT_TRUE(byName.IsOpen());
}

TEST(AControllerWithAName, IsOffLineAtTheDeadlineWhenTheNameServerIsSilent) {
  const int cannot = 1;
  const int tooLate = 2;
  const TemporaryFolder folder;
  // The disk is of no use here; with it come mounts of the child's own, below which nothing can be removed there.
  const TemporaryFolder disk;
  // An address of its own, for tests that run at the same time.
  const auto number = static_cast<std::uint32_t>(::getpid()) & 0xffffU;
  folder.Write("resolv.conf", "nameserver 127.53." + std::to_string(number >> 8U) + "." + std::to_string(number & 0xffU) +
                                  "\noptions timeout:30 attempts:3\n");
  Child child([&]() -> int {
    const FileDescriptor server(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(53);
    address.sin_addr.s_addr = htonl(0x7f350000U | number);
    if (::bind(server.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        !MountSmallDisk(disk.Path()) ||
        ::mount(folder.Path("resolv.conf").c_str(), "/etc/resolv.conf", nullptr, MS_BIND, nullptr) != 0) {
      return cannot;
    }
    SshConfiguration configuration;
    configuration.server = {"controller.example", 22, folder.Path("known")};
    configuration.connectTimeout = seconds(1);
    Lines log;
    Controller controller(configuration, [&](const std::string& line) { log.push_back(line); });
    std::string text;
    int status = 0;
    // The second one is asked for while the system goes on with the first one.
    for (int count = 0; count != 2; ++count) {
      const auto begin = Clock::now();
      status = controller.Read(text);
      if (Clock::now() - begin > kLoaded) {
        return tooLate;
      }
    }
    return log.size() == 1 && log.front().find("its name did not resolve in time") != std::string::npos ? status : -1;
  });
  const std::optional<int> result = child.Result();
  if (result == cannot) {
    GTEST_SKIP() << "no name server can be set up here";
  }
  EXPECT_EQ(drivers::kControllerOffLine, result);
}

// An agent with keys that says nothing. It goes away at the latest when a test has taken too long.
class SilentKeyAgent {
 public:
  explicit SilentKeyAgent(bool isFull) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = m_folder.Path("agent");
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const auto* const name = reinterpret_cast<const sockaddr*>(&address);
    EXPECT_EQ(0, ::bind(m_listener.Get(), name, sizeof address));
    EXPECT_EQ(0, ::listen(m_listener.Get(), isFull ? 0 : 100));
    int connected = isFull ? 0 : -1;
    while (connected == 0) {
      m_waiting.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
      connected = ::connect(m_waiting.back().Get(), name, sizeof address);
    }
    ::setenv("SSH_AUTH_SOCK", path.c_str(), 1);
  }
  ~SilentKeyAgent() {
    ::unsetenv("SSH_AUTH_SOCK");
    m_isDone.set_value();
    m_end.join();
  }
  SilentKeyAgent(const SilentKeyAgent&) = delete;
  SilentKeyAgent& operator=(const SilentKeyAgent&) = delete;

 private:
  TemporaryFolder m_folder;
  FileDescriptor m_listener{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  std::vector<FileDescriptor> m_waiting;
  std::promise<void> m_isDone;
  std::thread m_end{[this] {
    m_isDone.get_future().wait_for(3 * kLoaded);
    m_listener.Close();
  }};
};

std::size_t CountEntries(const char* folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST_F(AControllerBehindABadLine, IsOffLineWhenTheKeyAgentIsSilent) {
  m_configuration.login.key.clear();
  // The first connection may be slow on a busy machine, and must not be what takes the time.
  m_configuration.connectTimeout = seconds(3);
  for (const bool isFull : {false, true}) {
    const std::size_t descriptors = CountEntries("/proc/self/fd");
    const std::size_t threads = CountEntries("/proc/self/task");
    {
      const SilentKeyAgent agent(isFull);
      Controller controller = Make();
      std::string text;
      for (int count = 0; count != 2; ++count) {
        const milliseconds time = Timed([&] { EXPECT_EQ(drivers::kControllerOffLine, controller.Read(text)); });
        EXPECT_GE(time, m_configuration.connectTimeout);
        EXPECT_LT(time, kLoaded);
      }
      EXPECT_NE(std::string::npos, m_log.back().find("the SSH agent on this machine did not answer in time"))
          << m_log.back();
    }
    EXPECT_EQ(descriptors, CountEntries("/proc/self/fd"));
    // A thread of the system that has looked a name up for an earlier test may end meanwhile.
    EXPECT_LE(CountEntries("/proc/self/task"), threads);
  }
  EXPECT_EQ(kOld, File());
}

// Packets to a dead network are lost without an answer. So are those to a listener that has as many connections waiting as
// it wants.
TEST_F(AControllerBehindABadLine, IsOffLineWhenTheNetworkIsDead) {
  const FileDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(0, ::bind(listener.Get(), reinterpret_cast<sockaddr*>(&address), size));
  ASSERT_EQ(0, ::listen(listener.Get(), 0));
  ASSERT_EQ(0, ::getsockname(listener.Get(), reinterpret_cast<sockaddr*>(&address), &size));
  std::vector<FileDescriptor> waiting;
  waiting.reserve(4);
  for (int count = 0; count < 4; ++count) {
    waiting.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    ::connect(waiting.back().Get(), reinterpret_cast<sockaddr*>(&address), size);
  }
  m_configuration.server.port = ntohs(address.sin_port);
  m_configuration.connectTimeout = seconds(1);
  Controller controller = Make();
  std::string text;
  const milliseconds time = Timed([&] { EXPECT_EQ(drivers::kControllerOffLine, controller.Read(text)); });
  EXPECT_GE(time, milliseconds(900));
  EXPECT_LT(time, kLoaded);
  EXPECT_EQ((Lines{"the controller " + controller.GetAddress() + " cannot be reached: Connection timed out"}), m_log);
}

TEST_F(AControllerBehindABadLine, LeavesOpenHowACommandEndedThatTookTooLong) {
  m_configuration.operationTimeout = seconds(1);
  Controller controller = Make();
  const milliseconds time = Timed([&] { EXPECT_EQ(drivers::kOutcomeUnknown, controller.RunCommand({"sleep", "30"})); });
  EXPECT_LT(time, kLoaded);
  std::string text;
  EXPECT_TRUE(Eventually([&] { return controller.Read(text) == 0; }, kPatient));
}

TEST_F(AControllerBehindABadLine, GivesUpAFileThatTakesTooLong) {
  m_configuration.operationTimeout = seconds(1);
  m_configuration.connectTimeout = seconds(5);
  Controller controller = Make();
  std::string text;
  EXPECT_TRUE(Eventually([&] { return controller.Read(text) == 0; }, kPatient));
  m_proxy.Delay(milliseconds(700));
  EXPECT_EQ(drivers::kControllerOffLine, controller.Replace(kOld, kNew));
  m_proxy.Delay(milliseconds(0));
  EXPECT_TRUE(Eventually([this] { return HasOnlyTheFile(); }, kPatient));
  EXPECT_TRUE(File() == kOld || File() == kNew);
  EXPECT_TRUE(Eventually([&] { return controller.Replace(kOld, kNew) == 0; }, kPatient));
  EXPECT_EQ(kNew, File());
}

TEST_F(AControllerBehindABadLine, NeverRunsACommandTwice) {
  Controller controller = Make();
  const std::string calls = m_server.Files().Path("calls");
  const Lines command = {"sh", "-c", "echo called >>\"$0\"; sleep 0.2", calls};
  EXPECT_EQ(0, controller.RunCommand(command));
  const std::size_t before = m_proxy.Bytes(Way::ToClient);
  EXPECT_EQ(0, controller.RunCommand(command));
  // All of the answer but its last byte.
  m_proxy.CutAfter(Way::ToClient, m_proxy.Bytes(Way::ToClient) - before - 1);
  controller.RunCommand(command);
  // The end of the channel may still be on its way when the command is done.
  EXPECT_TRUE(Eventually([this] { return m_proxy.HasCut(); }));
  EXPECT_EQ("called\ncalled\ncalled\n", m_server.Files().Read("calls"));
}

// What belongs to the operation before has come through: the end of its channel, and the opening of the next one.
void AControllerBehindABadLine::Settle() {
  const auto count = [this] { return m_proxy.Bytes(Way::ToServer) + m_proxy.Bytes(Way::ToClient); };
  for (std::size_t before = count() + 1; before != count();) {
    before = count();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
  }
}

void AControllerBehindABadLine::CutAt(Way way, std::size_t bytes) {
  WriteFile(kOld);
  Controller controller = Make();
  std::string text;
  ASSERT_TRUE(Eventually([&] { return controller.Read(text) == 0; }, kPatient)) << m_log.back();
  Settle();
  // The next connection is cut, too, while it is being made, so that nothing repairs the first one.
  m_proxy.CutAfter(way, bytes, true);
  const int status = controller.Replace(kOld, kNew);
  if (!m_proxy.HasCut()) {
    // The last packet closes the channel, and may be on its way when all is done.
    ASSERT_EQ(0, status) << bytes;
    ASSERT_LT(++m_tooLate, kLastPacket) << bytes;
    m_proxy.CutNoMore();
    return;
  }
  ASSERT_TRUE(status == drivers::kControllerOffLine || status == 0) << status;
  ASSERT_TRUE(Eventually([this] { return HasOnlyTheFile(); }, kPatient)) << bytes;
  const std::string file = File();
  ++(file == kNew ? m_new : file == kOld ? m_old : m_torn);
  EXPECT_TRUE(file == kNew || (status != 0 && file == kOld)) << bytes << ": " << file;
  m_proxy.CutNoMore();
  ASSERT_TRUE(Eventually([&] { return controller.Replace(kOld, kNew) == 0; }, kPatient)) << bytes << " " << m_log.back();
  ASSERT_EQ(kNew, File()) << bytes;
}

// At as many bytes as the environment says (SSH_CUTS), from the one that it says (SSH_CUTS_FROM), else at some that are
// spread over all. No time-out of the driver may end an operation that the cut is to end.
void AControllerBehindABadLine::CutAlong(Way way) {
  m_configuration.connectTimeout = kPatient / 2;
  m_configuration.operationTimeout = kPatient;
  Controller controller = Make();
  std::string text;
  ASSERT_TRUE(Eventually([&] { return controller.Read(text) == 0; }, kPatient)) << m_log.back();
  Settle();
  const std::size_t before = m_proxy.Bytes(way);
  ASSERT_EQ(0, controller.Replace(kOld, kNew));
  const std::size_t all = m_proxy.Bytes(way) - before;
  const char* const wanted = std::getenv("SSH_CUTS");
  const std::size_t most = wanted == nullptr ? 10 : std::min(all, static_cast<std::size_t>(std::stoul(wanted)));
  const std::size_t step = std::max<std::size_t>(1, all / most);
  const char* const from = std::getenv("SSH_CUTS_FROM");
  for (std::size_t bytes = from == nullptr ? 1 : std::stoul(from); bytes <= all && !HasFatalFailure(); bytes += step) {
    CutAt(way, bytes);
  }
  // A line of the table in docs/decisions/controllers-over-ssh.md.
  std::cout << "| on the way " << (way == Way::ToServer ? "to the controller" : "from it") << " | " << m_new + m_old + m_torn
            << " | " << m_new << " | " << m_old << " | " << m_torn << " |\n";
}

TEST_F(AControllerBehindABadLine, HasTheOldFileOrTheNewOneWhereverTheLineToItIsCut) {
  CutAlong(Way::ToServer);
}

TEST_F(AControllerBehindABadLine, HasTheOldFileOrTheNewOneWhereverTheLineFromItIsCut) {
  CutAlong(Way::ToClient);
}

TEST_F(AControllerBehindABadLine, LeavesNoDescriptorOfThisProcessOpen) {
  const auto count = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
  std::string text;
  const auto before = count();
  for (int round = 0; round < 3; ++round) {
    Controller controller = Make();
    EXPECT_EQ(0, controller.Read(text));
    m_proxy.CutAfter(Way::ToServer, 100);
    EXPECT_EQ(0, controller.Read(text));
  }
  EXPECT_TRUE(Eventually([&] { return count() <= before; })) << count() << " " << before;
}

}  // namespace

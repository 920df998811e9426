// The built program, as the front starts it.
#include "devhost/commands/HostProcess.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "devhost/system/FileDescriptor.h"
#include "tests/devhost/support/TestModules.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class AHostProcess : public testing::Test {
 protected:
  AHostProcess() {
    folder.Write("kitchen/snmpd.conf", "# by hand\n");
    Describe("");
  }
  ~AHostProcess() override {
    if (process > 0) {
      ::kill(process, SIGKILL);
      ::waitpid(process, nullptr, 0);
    }
  }

  // A project with the agent, the kitchen, and more.
  void Describe(const std::string& more, const std::string& module = "simulated_device.so") const {
    folder.Write("project.xml",
                 "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' "
                 "name='kitchen' module='" +
                     module + "'><config folder='{project}/kitchen'/></driver>" + more + "</project>");
  }

  void Start(std::vector<std::string> more = {}) {
    std::vector<std::string> words = {DEVHOST_PROGRAM, kHostProcess, "--project", folder.Path("project.xml"),
                                      "--module-dir",  MODULE_FOLDER};
    words.insert(words.end(), more.begin(), more.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
      argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    std::array<int, 2> in = {};
    std::array<int, 2> out = {};
    ASSERT_EQ(::pipe2(in.data(), O_CLOEXEC), 0);
    ASSERT_EQ(::pipe2(out.data(), O_CLOEXEC), 0);
    const std::string errors = folder.Write("errors", "");
    process = ::fork();
    if (process == 0) {
      ::dup2(in[0], STDIN_FILENO);
      ::dup2(out[1], STDOUT_FILENO);
      ::dup2(::open(errors.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC), STDERR_FILENO);
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    input = FileDescriptor(in[1]);
    output = FileDescriptor(out[0]);
  }

  // Returns whether the process has read it, or will.
  bool Send(const std::string& line) const {
    const std::string text = line + "\n";
    const auto before = ::signal(SIGPIPE, SIG_IGN);
    std::size_t at = 0;
    for (ssize_t written = 0; written >= 0 && at<text.size(); at += written> 0 ? static_cast<std::size_t>(written) : 0) {
      written = ::write(input.Get(), text.data() + at, text.size() - at);
    }
    ::signal(SIGPIPE, before);
    return at == text.size();
  }

  // The next line that begins so, "" at the end of the output, and when none comes for 60 seconds.
  std::string Await(const std::string& start) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (;;) {
      for (std::size_t feed = read.find('\n'); feed != std::string::npos; feed = read.find('\n')) {
        const std::string line = read.substr(0, feed);
        read.erase(0, feed + 1);
        if (line.compare(0, start.size(), start) == 0) {
          return line;
        }
      }
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
      pollfd polled = {output.Get(), POLLIN, 0};
      char buffer[4096];
      if (left.count() <= 0 || ::poll(&polled, 1, static_cast<int>(left.count())) != 1) {
        return "";
      }
      const ssize_t got = ::read(output.Get(), buffer, sizeof buffer);
      if (got <= 0) {
        return "";
      }
      read.append(buffer, static_cast<std::size_t>(got));
    }
  }

  // How the process ends, as waitpid says.
  int End() {
    input.Close();
    while (!Await("nothing").empty()) {
    }
    int status = -1;
    ::waitpid(process, &status, 0);
    process = 0;
    return status;
  }

  const testsupport::ScratchFolder folder;
  pid_t process = 0;
  FileDescriptor input;
  FileDescriptor output;
  std::string read;
};

constexpr char kReady[] = R"({"ready":true})";

TEST_F(AHostProcess, KeepsStatesAndEndsAtTheEndOfItsInput) {
  Start({"--state", folder.Path("states")});
  ASSERT_EQ(Await("{\"ready"), kReady);
  Send(R"({"id":1,"method":"PUT","path":"/devices/12/managed"})");
  EXPECT_THAT(Await("{\"id\""), HasSubstr("\"status\":200"));
  EXPECT_EQ(End(), 0);
  EXPECT_THAT(folder.Read("states/driver-1.xml"), HasSubstr("<SNMPState"));
  EXPECT_EQ(folder.Read("errors"), "");
}

// As when the disk is full: success would be a lie.
TEST_F(AHostProcess, NamesTheStatesThatItCouldNotKeep) {
  Start({"--state", folder.Path("states")});
  ASSERT_EQ(Await("{\"ready"), kReady);
  std::filesystem::remove_all(folder.Path("states"));
  EXPECT_EQ(WEXITSTATUS(End()), 1);
  EXPECT_THAT(folder.Read("errors"),
              AllOf(HasSubstr("devhost: driver 1 \"agent\": "), HasSubstr("driver-1.xml: the state is not kept")));
}

TEST_F(AHostProcess, SaysWhyItCannotStart) {
  folder.Write("project.xml", "<project>");
  Start();
  EXPECT_THAT(Await("{"), AllOf(StartsWith("{\"failed\":"), HasSubstr("project.xml:1")));
  EXPECT_EQ(WEXITSTATUS(End()), 2);
}

TEST_F(AHostProcess, NamesTheDriverThatEndsIt) {
  Describe("<driver id='20' name='odd' module='" + TestModule("odd_device") +
           "'><config copyFrom='exit' announce='Initialize'/></driver>");
  Start();
  ASSERT_EQ(Await("{\"ready"), kReady);
  Send(R"({"id":1,"method":"GET","path":"/devices"})");
  EXPECT_EQ(Await("{\"id\""), "");
  EXPECT_EQ(WEXITSTATUS(End()), 1);
  EXPECT_THAT(folder.Read("errors"), AllOf(HasSubstr("CopyFrom"), HasSubstr("driver 20 \"odd\"")));
}

// The agent does not know it, so it is the session itself that asks.
TEST_F(AHostProcess, NamesTheDriverThatEndsItWhileItIsOnlyAsked) {
  Describe("<driver id='20' name='odd' module='" + TestModule("odd_device") +
           "'><config copyFrom='exit' announce='never'/></driver>");
  Start();
  ASSERT_EQ(Await("{\"ready"), kReady);
  Send(R"({"id":1,"method":"GET","path":"/devices"})");
  EXPECT_THAT(Await("{\"id\""), HasSubstr("\"status\":200"));
  Send(R"({"id":2,"method":"GET","path":"/devices/20"})");
  EXPECT_EQ(Await("{\"id\""), "");
  EXPECT_EQ(WEXITSTATUS(End()), 1);
  EXPECT_THAT(folder.Read("errors"), HasSubstr("during CopyFrom of driver 20 \"odd\""));
}

TEST_F(AHostProcess, NamesTheDriverThatItHangsIn) {
  Describe("<driver id='20' name='odd' module='" + TestModule("odd_device") +
           "'><config copyFrom='hang' announce='never'/></driver>");
  Start();
  ASSERT_EQ(Await("{\"ready"), kReady);
  Send(R"({"id":1,"method":"GET","path":"/devices/20"})");
  for (int i = 0; i < 600 && folder.Read("errors").empty(); ++i) {
    ::usleep(100'000);
    ::kill(process, SIGURG);
  }
  EXPECT_THAT(folder.Read("errors"), StartsWith("devhost: CopyFrom of driver 20 \"odd\" has not returned\n"));
}

// The daemon of a device is a program that must not outlive it.
TEST_F(AHostProcess, TakesItsDaemonsWithItWhenItIsTerminated) {
  Describe("", "local_snmpd.so");
  Start();
  ASSERT_EQ(Await("{\"ready"), kReady);
  Send(
      R"({"id":1,"method":"POST","path":"/command","body":{"driver":12,"name":"SetSetting","parameters":{"name":"enabled","value":"true"}}})");
  Send(R"({"id":2,"method":"POST","path":"/devices/12/actions","body":{"action":"start","device":"kitchen"}})");
  Send(R"({"id":3,"method":"GET","path":"/devices"})");
  const std::string listed = Await("{\"id\":3");
  const std::size_t at = listed.find("\"pid\":");
  ASSERT_NE(at, std::string::npos) << listed;
  const pid_t daemon = std::stoi(listed.substr(at + 6));
  ASSERT_EQ(::kill(daemon, 0), 0);
  ::kill(process, SIGTERM);
  int status = 0;
  ::waitpid(process, &status, 0);
  process = 0;
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
  for (int i = 0; i < 1200 && ::kill(daemon, 0) == 0; ++i) {
    ::usleep(50000);
  }
  EXPECT_NE(::kill(daemon, 0), 0);
}

TEST_F(AHostProcess, EndsInOrderWhenALineIsTooLong) {
  Start({"--state", folder.Path("states")});
  ASSERT_EQ(Await("{\"ready"), kReady);
  Send(R"({"id":1,"method":"PUT","path":"/devices/12/managed"})");
  Send(std::string(std::size_t{17} << 20, ' '));
  EXPECT_EQ(WEXITSTATUS(End()), 1);
  EXPECT_THAT(folder.Read("errors"), HasSubstr("a line has more than 16777216 bytes"));
  EXPECT_THAT(folder.Read("states/driver-1.xml"), HasSubstr("<SNMPState"));
}

TEST_F(AHostProcess, GivesItsDriversNeitherItsInputNorItsOutput) {
  Describe("<driver id='20' name='rude' module='" + TestModule("well_behaved") + "'/>", "local_snmpd.so");
  Start();
  ASSERT_EQ(Await("{\"ready"), kReady);
  const std::string descriptors = "/proc/" + std::to_string(process) + "/task/" + std::to_string(process) + "/children";
  pid_t watched = 0;
  std::ifstream(descriptors) >> watched;
  ASSERT_GT(watched, 0);
  const std::string folderOfDescriptors = "/proc/" + std::to_string(watched) + "/fd/";
  EXPECT_EQ(std::filesystem::read_symlink(folderOfDescriptors + "0"), "/dev/null");
  EXPECT_EQ(std::filesystem::read_symlink(folderOfDescriptors + "1"),
            std::filesystem::read_symlink(folderOfDescriptors + "2"));
  EXPECT_EQ(End(), 0);
}

}  // namespace
}  // namespace devhost

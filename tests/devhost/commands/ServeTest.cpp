#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "devhost/system/FileDescriptor.h"
#include "devhost/system/KeptProcess.h"
#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// The program with real drivers.
class TheConsole : public CommandsFixture {
 protected:
  TheConsole() {
    std::filesystem::create_directory(folder.Path("kitchen"));
    File("project.xml",
         "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/>"
         "<driver id='12' name='kitchen' module='simulated_device.so'><config "
         "folder='{project}/kitchen'/></driver></project>");
  }

  // Starts "devhost serve" with these arguments, and with `environment` beside the own one.
  void Start(const std::vector<std::string>& more, const std::vector<std::string>& environment = {}) {
    std::vector<std::string> words = {"devhost",     "serve",     "--module-dir",
                                      MODULE_FOLDER, "--project", folder.Path("project.xml")};
    words.insert(words.end(), more.begin(), more.end());
    std::vector<std::string> variables = environment;
    for (char** variable = environ; *variable != nullptr; ++variable) {
      variables.emplace_back(*variable);
    }
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    m_output = FileDescriptor(ends[0]);
    const FileDescriptor to(ends[1]);
    process.emplace(ProcessImage{DEVHOST_PROGRAM, words, variables, -1, -1, to.Get()});
  }
  // What it prints until `end` comes, or all of it.
  std::string ReadUntil(const std::string& end) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    std::array<char, 4096> block{};
    while (m_text.find(end) == std::string::npos && std::chrono::steady_clock::now() < deadline) {
      struct pollfd ready = {m_output.Get(), POLLIN, 0};
      if (::poll(&ready, 1, 100) == 0) {
        continue;
      }
      const ssize_t count = ::read(m_output.Get(), block.data(), block.size());
      if (count <= 0) {
        break;
      }
      m_text.append(block.data(), static_cast<std::size_t>(count));
    }
    return m_text;
  }
  // Its exit status, or 128 and the signal that has ended it.
  int Await() {
    EXPECT_TRUE(process->WaitForEnd(std::chrono::seconds(60)));
    const int status = process->WaitStatus().value_or(-1);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  // One answer of the interface for the address that the console has printed.
  static std::string Get(const std::string& address, const std::string& path) {
    const std::size_t mark = address.find("/#");
    const std::string port = address.substr(address.rfind(':', mark) + 1, mark - address.rfind(':', mark) - 1);
    const FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    struct sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port)));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(socket.Get(), reinterpret_cast<struct sockaddr*>(&to), sizeof to), 0);
    const std::string request = "GET /api/v1" + path + " HTTP/1.1\r\nHost: 127.0.0.1:" + port +
                                "\r\nConnection: close\r\nX-Devhost-Token: " + address.substr(mark + 2, 64) + "\r\n\r\n";
    EXPECT_EQ(::send(socket.Get(), request.data(), request.size(), MSG_NOSIGNAL), static_cast<ssize_t>(request.size()));
    std::string text;
    std::array<char, 4096> block{};
    for (ssize_t count = 1; count > 0;) {
      count = ::recv(socket.Get(), block.data(), block.size(), 0);
      text.append(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return text;
  }

  std::optional<KeptProcess> process;

 private:
  FileDescriptor m_output;
  std::string m_text;
};

TEST_F(TheConsole, ServesTheDevicesOfAProjectUntilASignal) {
  Start({"--state", folder.Path("states")});
  const std::string text = ReadUntil("\n");
  ASSERT_THAT(text, testing::ContainsRegex("^Console: http://127\\.0\\.0\\.1:[0-9]+/#[0-9a-f]{64}\n"));
  EXPECT_THAT(Get(text, "/devices"), HasSubstr("\"kitchen\""));
  EXPECT_THAT(Get(text, "/session"), HasSubstr("\"project\":\"project.xml\""));
  process->Signal(SIGTERM);
  EXPECT_EQ(Await(), 0);
  EXPECT_EQ(ReadUntil("(nothing else)"), text) << "the address, once, and nothing else";
  EXPECT_TRUE(std::filesystem::exists(folder.Path("states/driver-1.xml")));
}

TEST_F(TheConsole, KeepsTheTokenOutOfItsOutputWhereAFileIsToHaveIt) {
  Start({"--token-file", folder.Path("token")});
  EXPECT_THAT(ReadUntil("\n"), Not(HasSubstr("#")));
  const std::string address = folder.Read("token");
  struct stat status = {};
  ASSERT_EQ(::stat(folder.Path("token").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_THAT(Get(address, "/session"), StartsWith("HTTP/1.1 200 "));
  process->Signal(SIGINT);
  EXPECT_EQ(Await(), 0);
  EXPECT_FALSE(std::filesystem::exists(folder.Path("token")));
}

TEST_F(TheConsole, HasItsTokenOnNoCommandLine) {
  Start({});
  const std::string text = ReadUntil("\n");
  const std::string token = text.substr(text.find('#') + 1, 64);
  Get(text, "/devices");
  int seen = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream file(entry.path() / "cmdline", std::ios::binary);
    std::ostringstream words;
    words << file.rdbuf();
    seen += words.str().find("__host") != std::string::npos ? 1 : 0;
    EXPECT_THAT(words.str(), Not(HasSubstr(token)));
  }
  EXPECT_GE(seen, 1) << "the command line of the host process was among them";
}

TEST_F(TheConsole, SaysThatItsProjectIsMissing) {
  std::filesystem::remove(folder.Path("project.xml"));
  Start({});
  const std::string text = ReadUntil("(all)");
  EXPECT_THAT(text, HasSubstr("project.xml"));
  EXPECT_THAT(text, Not(HasSubstr("Console:"))) << "there is nothing to open";
  EXPECT_NE(Await(), 0);
}

TEST_F(TheConsole, EndsWhereNobodyCanLearnItsAddress) {
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  process.emplace(ProcessImage{DEVHOST_PROGRAM,
                               {"devhost", "serve", "--module-dir", MODULE_FOLDER, "--project", folder.Path("project.xml")},
                               {},
                               -1,
                               -1,
                               full.Get()});
  EXPECT_EQ(Await(), 1);
}

TEST_F(TheConsole, KnowsWhatAPortIs) {
  for (const char* const port : {"x", "-1", "65536", "80 ", "0x50", "123456"}) {
    const Outcome outcome = Run({"serve", "--project", folder.Path("project.xml"), "--port", port});
    EXPECT_EQ(outcome.status, ExitStatus::Wrong) << port;
    EXPECT_THAT(outcome.errors, HasSubstr("allowed: 0 to 65535")) << port;
  }
}

TEST_F(TheConsole, SaysThatItsPortIsTaken) {
  Start({});
  const std::string text = ReadUntil("\n");
  const std::string port = text.substr(text.rfind(':') + 1, text.find("/#") - text.rfind(':') - 1);
  const Outcome outcome = Run({"serve", "--project", folder.Path("project.xml"), "--port", port});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.errors, HasSubstr("cannot listen on 127.0.0.1, port " + port + ": Address already in use"));
}

TEST_F(TheConsole, OpensItsPageThroughAFileOfItsOwner) {
  const std::string opened = folder.Path("opened");
  folder.Write("bin/xdg-open", "#!/bin/sh\nstat -c %a \"$1\" > " + opened + ".new; echo \"$1\" >> " + opened +
                                   ".new; cat \"$1\" >> " + opened + ".new\nmv " + opened + ".new " + opened + "\n");
  ::chmod(folder.Path("bin/xdg-open").c_str(), 0755);
  std::filesystem::create_directory(folder.Path("run"));
  Start({"--open"}, {"PATH=" + folder.Path("bin") + ":/usr/bin:/bin", "XDG_RUNTIME_DIR=" + folder.Path("run")});
  const std::string text = ReadUntil("\n");
  const std::string address = text.substr(9, text.size() - 10);
  for (int i = 0; i < 3000 && !std::filesystem::exists(opened); ++i) {
    ::usleep(10'000);
  }
  const std::string seen = folder.Read("opened");
  EXPECT_THAT(seen, StartsWith("600\n" + folder.Path("run") + "/devhost-"));
  EXPECT_THAT(seen.substr(0, seen.find("<!doctype")), Not(HasSubstr(address.substr(address.find('#') + 1))));
  EXPECT_THAT(seen, HasSubstr("url=" + address + "\""));
  process->Signal(SIGTERM);
  EXPECT_EQ(Await(), 0);
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path("run")));
}

}  // namespace
}  // namespace devhost

// What snmpd itself complains of.
#include "devhost/check/DaemonParser.h"

#include <gmock/gmock.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <sys/socket.h>

#include <filesystem>
#include <optional>
#include <stdexcept>

#include "devhost/check/Rules.h"
#include "devhost/snmpd/PassiveDirectives.h"
#include "devhost/system/FileDescriptor.h"
#include "tests/devhost/check/RawDaemon.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testsupport::ScratchFolder;

// A TCP port of 127.0.0.1.
class Listener {
 public:
  Listener() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    if (::bind(m_socket.Get(), generic, size) != 0 || ::listen(m_socket.Get(), 8) != 0 ||
        ::getsockname(m_socket.Get(), generic, &size) != 0) {
      throw std::runtime_error("no free port");
    }
    m_port = std::to_string(ntohs(address.sin_port));
  }
  const std::string& Port() const { return m_port; }
  // Whether anybody has connected since the last call.
  bool WasCalled() {
    bool was = false;
    for (;;) {
      const FileDescriptor caller(::accept(m_socket.Get(), nullptr, nullptr));
      if (!caller.IsOpen()) {
        return was;
      }
      was = true;
    }
  }

 private:
  const FileDescriptor m_socket;
  std::string m_port;
};

// The findings, as "LINE: REASON".
std::vector<std::string> Said(const std::string& text, bool showSecrets = false, const std::string& path = "") {
  Report report("snmpd.conf", showSecrets);
  Report rules("snmpd.conf", false);
  Circumstances circumstances;
  circumstances.path = path;
  DaemonText forDaemon;
  JudgeText(text, rules, circumstances, &forDaemon);
  EXPECT_EQ(AskDaemon(forDaemon, report), "");
  std::vector<std::string> said;
  for (const Finding& finding : report.Take()) {
    EXPECT_EQ(finding.rule, kDaemonRule);
    EXPECT_EQ(finding.severity, Severity::Error);
    said.push_back(std::to_string(finding.line) + ": " + finding.reason);
  }
  return said;
}

TEST(TheDaemon, NamesTheLineThatItRejects) {
  EXPECT_THAT(Said("rocommunity  reader\nsysObjectID  bogus\n# a comment\nrouser\n"),
              ElementsAre("2: the daemon says: Error: sysobjectid token not a parsable OID:",
                          "4: the daemon says: Error: Blank line following *****"));
}

TEST(TheDaemon, NamesTheLineOfAnIncludedFile) {
  const ScratchFolder folder;
  folder.Write("more.conf", "# a comment\nrouser\n");
  const std::string path = folder.Path("snmpd.conf");
  Report report(path, false);
  Circumstances circumstances;
  circumstances.path = path;
  DaemonText forDaemon;
  JudgeText("includeFile more.conf\nrwuser\n", report, circumstances, &forDaemon);
  EXPECT_EQ(AskDaemon(forDaemon, report), "");
  std::vector<std::string> places;
  for (const Finding& finding : report.Take()) {
    if (finding.rule == kDaemonRule) {
      places.push_back(finding.file + ":" + std::to_string(finding.line));
    }
  }
  EXPECT_THAT(places, ElementsAre(path + ":2", folder.Path("more.conf") + ":2"));
}

// It reads some from its own store alone, and crashes on other values than it has stored; it crashes on a repair without a
// program, too. It is asked without smux.
TEST(TheDaemon, KnowsTheDirectivesThatTheRulesKnow) {
  std::string text;
  for (const std::string& name : UsualDirectiveNames().daemon) {
    const bool isStored = name.compare(0, 4, "vacm") == 0 || name == "usmuser";
    const bool isSkipped = isStored || name == "procfix" || name.compare(0, 4, "smux") == 0;
    text += isSkipped ? "" : name + " x\n";
  }
  for (const auto& [line, said] : RawDaemon(text).complaints) {
    EXPECT_THAT(said, Not(Contains(HasSubstr("Unknown token")))) << line;
  }
  EXPECT_THAT(RawDaemon("bogus x\n").complaints[1], ElementsAre(HasSubstr("Unknown token")));
}

TEST(TheDaemon, IsQuotedWithoutCommunities) {
  // A community comes to stand where the daemon quotes it.
  EXPECT_THAT(Said("iqueryVersion  s3cret\n"), ElementsAre("1: the daemon says: Error: Unknown/disabled version: *****"));
  EXPECT_THAT(Said("iqueryVersion  s3cret\n", true),
              ElementsAre("1: the daemon says: Error: Unknown/disabled version: s3cret"));
}

// Whatever a line names, in whatever section and file it stands, the daemon leaves it alone.
TEST(TheDaemon, TouchesNothingThatALineNames) {
  const ScratchFolder folder;
  const std::string file = folder.Path("touched");
  std::string text;
  for (const char* const start :
       {"[snmp] logOption f ", "[snmp] persistentDir ", "[snmp] tempFilePattern ", "[snmp]\nlogOption f ", "persistentDir ",
        "[snmpd]\nagentXSocket ", "master agentx\nagentXSocket unix:", "trapsess -v 2c -c x -Lf ", "proxy -v 2c -c x -Lf ",
        "trap2sink unix:", "perl open(F, '>', '", "dlmod x ", "extend x touch ", "sh x touch ", "pass .1.3 touch ",
        "agentaddress unix:", "logmatch x ", "sendmail_stats "}) {
    text += std::string(start) + file + "\n";
  }
  folder.Write("d/more.conf", text);
  Said(text + "includeDir " + folder.Path("d") + "\n" + text, false, folder.Path("snmpd.conf"));
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(TheDaemon, TouchesNoFileThatStandsInAnyOperand) {
  const ScratchFolder folder;
  const std::string file = folder.Path("touched");
  for (const std::string& name : UsualDirectiveNames().daemon) {
    // The daemon crashes on a createUser of two words.
    if (IsPassiveDirective(name) && name != "createuser") {
      Said(name + " " + file + "\n" + name + " x " + file + "\n" + name + " x x " + file + "\n" + name + " -o " + file +
           "\n");
      EXPECT_TRUE(std::filesystem::is_empty(folder.Path())) << name;
    }
  }
}

TEST(TheDaemon, CallsNobody) {
  Listener listener;
  const std::string target = "tcp:127.0.0.1:" + listener.Port();
  const std::string text =
      "trap2sink " + target + "\nproxy -v 2c -c x " + target + " .1.3\ntrapsess -v 2c -c x " + target + "\n";
  RawDaemon{text};
  ASSERT_TRUE(listener.WasCalled());
  Said(text);
  EXPECT_FALSE(listener.WasCalled());
}

class ATemporaryFolder : public testing::TestWithParam<const char*> {
 protected:
  ATemporaryFolder() : m_before(std::filesystem::current_path()) {
    std::filesystem::create_directory(m_folder.Path("a,b"));
    std::filesystem::current_path(m_folder.Path());
    const char* const value = ::getenv("TMPDIR");
    m_value = value == nullptr ? std::optional<std::string>() : value;
    ::setenv("TMPDIR", GetParam(), 1);
  }
  ~ATemporaryFolder() override {
    m_value ? ::setenv("TMPDIR", m_value->c_str(), 1) : ::unsetenv("TMPDIR");
    std::filesystem::current_path(m_before);
  }

  const ScratchFolder m_folder;

 private:
  const std::filesystem::path m_before;
  std::optional<std::string> m_value;
};

TEST_P(ATemporaryFolder, IsNotNeeded) {
  EXPECT_THAT(Said("rouser\n"), ElementsAre("1: the daemon says: Error: Blank line following *****"));
  EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("a,b")));
}

INSTANTIATE_TEST_SUITE_P(Names, ATemporaryFolder, testing::Values("a,b", "./a,b", "/nonexistent", ""));

}  // namespace
}  // namespace devhost

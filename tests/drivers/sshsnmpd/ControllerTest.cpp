// A controller behind the distribution's SSH server.

#include "drivers/sshsnmpd/Controller.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "devhost/system/FileDescriptor.h"
#include "devhost/system/KeptProcess.h"
#include "drivers/common/ConfigFile.h"
#include "drivers/common/FileStatus.h"
#include "drivers/sshsnmpd/RemoteScripts.h"
#include "drivers/sshsnmpd/SshStatus.h"
#include "tests/drivers/support/AccessList.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/Processes.h"
#include "tests/drivers/support/SmallDisk.h"
#include "tests/drivers/support/SshServer.h"
#include "tests/module/Shell.h"

namespace {

using drivers::Controller;
using drivers::SshConfiguration;
using Lines = std::vector<std::string>;
using Names = std::set<std::string>;

SshConfiguration ConfigurationFor(const SshServer& server, std::uint16_t port) {
  SshConfiguration configuration;
  configuration.server = {"127.0.0.1", port, server.KnownHosts(port)};
  configuration.login = {"controller", server.Key()};
  configuration.file = server.Files().Path("snmpd.conf");
  return configuration;
}

class AController : public testing::Test {
 protected:
  ~AController() override { EXPECT_LE(CountChildren(), 1U); }

  Controller Make(const SshConfiguration& configuration) {
    return Controller(configuration, [this](const std::string& line) { m_log.push_back(line); });
  }
  Controller Make() { return Make(ConfigurationFor(m_server, m_server.Port())); }

  void WriteFile(const std::string& text) const {
    m_server.Files().Write("snmpd.conf", text);
    m_server.GiveFiles();
  }
  std::string File() const { return m_server.Files().Read("snmpd.conf"); }

  SshServer m_server;
  Lines m_log;
};

TEST_F(AController, HasAFileThatIsReadAndReplaced) {
  WriteFile("first\n");
  Controller controller = Make();
  std::string text;
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ("first\n", text);
  EXPECT_EQ(0, controller.Replace("first\n", "second\n"));
  EXPECT_EQ("second\n", File());
  EXPECT_EQ(Names{"snmpd.conf"}, m_server.Files().Names());
  EXPECT_EQ(Lines(), m_log);
}

TEST_F(AController, KeepsEveryByte) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes.push_back(static_cast<char>(byte));
  }
  WriteFile(bytes);
  Controller controller = Make();
  std::string text;
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ(bytes, text);
  EXPECT_EQ(0, controller.Replace(bytes, bytes + bytes));
  EXPECT_EQ(bytes + bytes, File());
  EXPECT_EQ(0, controller.Replace(bytes + bytes, ""));
  EXPECT_EQ("", File());
}

TEST_F(AController, ReadsAMissingFileAsTheEmptyTextAndMakesItPrivate) {
  Controller controller = Make();
  std::string text = "nothing came";
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ("", text);
  EXPECT_EQ(drivers::kFileWasChanged, controller.Replace("old", "new"));
  EXPECT_EQ(Names(), m_server.Files().Names());
  EXPECT_EQ(0, controller.Replace("", "new"));
  EXPECT_EQ("new", File());
  EXPECT_EQ(std::filesystem::perms(0600), std::filesystem::status(m_server.Files().Path("snmpd.conf")).permissions());
  EXPECT_EQ(Names{"snmpd.conf"}, m_server.Files().Names());
}

TEST_F(AController, NeverOverwritesWhatSomebodyChanged) {
  WriteFile("by hand");
  Controller controller = Make();
  EXPECT_EQ(drivers::kFileWasChanged, controller.Replace("first", "second"));
  EXPECT_EQ("by hand", File());
  EXPECT_EQ(drivers::kFileWasChanged, controller.Replace("", "second"));
  EXPECT_EQ("by hand", File());
  // A write whose answer was lost is repeated.
  EXPECT_EQ(0, controller.Replace("first", "by hand"));
  EXPECT_EQ(Names{"snmpd.conf"}, m_server.Files().Names());
}

TEST_F(AController, KeepsTheModeOfTheFile) {
  for (const unsigned int mode : {0640U, 0444U, 0604U, 0755U, 0600U}) {
    WriteFile("old");
    ASSERT_EQ(0, ::chmod(m_server.Files().Path("snmpd.conf").c_str(), mode));
    Controller controller = Make();
    EXPECT_EQ(0, controller.Replace("old", "new"));
    EXPECT_EQ("new", File());
    EXPECT_EQ(std::filesystem::perms(mode), std::filesystem::status(m_server.Files().Path("snmpd.conf")).permissions());
    ASSERT_EQ(0, ::chmod(m_server.Files().Path("snmpd.conf").c_str(), 0644));
  }
}

TEST_F(AController, ReplacesNothingWhoseOwnerItCannotKeep) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can give a file to somebody else";
  }
  WriteFile("old");
  ASSERT_EQ(0, ::chown(m_server.Files().Path("snmpd.conf").c_str(), 0, 0));
  Controller controller = Make();
  EXPECT_EQ(drivers::FileStatusOfErrno(EPERM), controller.Replace("old", "new"));
  EXPECT_EQ("old", File());
  EXPECT_EQ(Names{"snmpd.conf"}, m_server.Files().Names());
}

TEST_F(AController, ReplacesNothingWhoseAccessListItCannotKeep) {
  WriteFile("old");
  if (!GiveAccessList(m_server.Files().Path("snmpd.conf"), AccessList::OfFile)) {
    GTEST_SKIP() << "this file system has no access lists";
  }
  Controller controller = Make();
  EXPECT_EQ(drivers::FileStatusOfErrno(EPERM), controller.Replace("old", "new"));
  EXPECT_EQ("old", File());
  EXPECT_TRUE(HasAccessList(m_server.Files().Path("snmpd.conf")));
  EXPECT_EQ(Names{"snmpd.conf"}, m_server.Files().Names());
}

TEST_F(AController, ReadsThroughALinkAndRefusesToReplaceIt) {
  m_server.Files().Write("elsewhere", "old");
  std::filesystem::create_symlink("elsewhere", m_server.Files().Path("snmpd.conf"));
  Controller controller = Make();
  std::string text;
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ("old", text);
  EXPECT_EQ(drivers::kFileIsSymbolicLink, controller.Replace("old", "new"));
  EXPECT_EQ("old", m_server.Files().Read("elsewhere"));
  std::filesystem::remove(m_server.Files().Path("elsewhere"));
  EXPECT_EQ(drivers::kFileIsSymbolicLink, controller.Read(text));
  EXPECT_EQ(drivers::kFileIsSymbolicLink, controller.Replace("", "new"));
  EXPECT_EQ(Names{"snmpd.conf"}, m_server.Files().Names());
}

TEST_F(AController, SaysWhatElseIsWrongWithTheFile) {
  Controller controller = Make();
  std::string text;
  std::filesystem::create_directory(m_server.Files().Path("snmpd.conf"));
  m_server.GiveFiles();
  EXPECT_EQ(drivers::kFileIsNotRegular, controller.Read(text));
  EXPECT_EQ(drivers::kFileIsNotRegular, controller.Replace("", "new"));
  std::filesystem::remove(m_server.Files().Path("snmpd.conf"));
  ASSERT_EQ(0, ::mkfifo(m_server.Files().Path("snmpd.conf").c_str(), 0666));
  m_server.GiveFiles();
  EXPECT_EQ(drivers::kFileIsNotRegular, controller.Read(text));
  EXPECT_EQ(drivers::kFileIsNotRegular, controller.Replace("", "new"));
  std::filesystem::remove(m_server.Files().Path("snmpd.conf"));
  WriteFile("old");
  ASSERT_EQ(0, ::chmod(m_server.Files().Path("snmpd.conf").c_str(), 0));
  if (SshServer::AccountId() != 0) {
    EXPECT_EQ(drivers::FileStatusOfErrno(EACCES), controller.Read(text));
    EXPECT_EQ(drivers::FileStatusOfErrno(EACCES), controller.Replace("old", "new"));
  }
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  configuration.file = m_server.Files().Path("missing/snmpd.conf");
  Controller elsewhere = Make(configuration);
  EXPECT_EQ(drivers::FileStatusOfErrno(ENOENT), elsewhere.Read(text));
  EXPECT_EQ(drivers::FileStatusOfErrno(ENOENT), elsewhere.Replace("", "new"));
}

TEST_F(AController, KeepsTheFileOfAFolderThatCannotBeWritten) {
  WriteFile("old");
  ASSERT_EQ(0, ::chmod(m_server.Files().Path().c_str(), 0555));
  Controller controller = Make();
  EXPECT_EQ(drivers::FileStatusOfErrno(EACCES), controller.Replace("old", "new"));
  EXPECT_EQ("old", File());
}

TEST_F(AController, KeepsTheFileOnAFullDisk) {
  const int cannotMount = 1;
  TemporaryFolder folder;
  Child child([&]() -> int {
    if (!MountSmallDisk(folder.Path())) {
      return cannotMount;
    }
    folder.Write("snmpd.conf", "old");
    if (::geteuid() == 0 &&
        (::chown(folder.Path().c_str(), SshServer::AccountId(), SshServer::AccountId()) != 0 ||
         ::chown(folder.Path("snmpd.conf").c_str(), SshServer::AccountId(), SshServer::AccountId()) != 0)) {
      return 2;
    }
    SshServer server;
    SshConfiguration configuration = ConfigurationFor(server, server.Port());
    configuration.file = folder.Path("snmpd.conf");
    Controller controller = Make(configuration);
    const int status = controller.Replace("old", std::string(100000, '#'));
    return folder.Read("snmpd.conf") == "old" && folder.Names() == Names{"snmpd.conf"} ? status : 3;
  });
  const std::optional<int> result = child.Result();
  if (result == cannotMount) {
    GTEST_SKIP() << "no disk can be mounted here; the folder without write permission stands for it";
  }
  EXPECT_EQ(drivers::FileStatusOfErrno(ENOSPC), result);
}

TEST_F(AController, TakesEveryPathAsItIs) {
  for (const char* const name : {"it's", "a \"b\" c", "$HOME `id` $(id)", "*?[x]", "a\\b;c&d|e", "-n", "\xc3\xa4%s%20"}) {
    SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
    configuration.file = m_server.Files().Path(name);
    m_server.Files().Write(name, "old");
    m_server.GiveFiles();
    Controller controller = Make(configuration);
    std::string text;
    EXPECT_EQ(0, controller.Read(text)) << name;
    EXPECT_EQ("old", text) << name;
    EXPECT_EQ(0, controller.Replace("old", "new")) << name;
    EXPECT_EQ("new", m_server.Files().Read(name)) << name;
    std::filesystem::remove(configuration.file);
    EXPECT_EQ(Names(), m_server.Files().Names()) << name;
  }
}

TEST_F(AController, RemovesWhatAKilledWriterHasLeft) {
  WriteFile("old");
  m_server.Files().Write(".snmpd.conf.new.0123.in", "half");
  m_server.Files().Write(".snmpd.conf.new.0123.out", "ha");
  m_server.Files().Write(".other.new.0123.out", "somebody's");
  m_server.GiveFiles();
  Controller controller = Make();
  EXPECT_EQ(0, controller.Replace("old", "new"));
  EXPECT_EQ((Names{"snmpd.conf", ".other.new.0123.out"}), m_server.Files().Names());
}

TEST_F(AController, MovesHugeFiles) {
  const std::string huge(std::size_t{20} * 1024 * 1024, 'x');
  WriteFile(huge);
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  // A busy machine takes longer than a controller may.
  configuration.operationTimeout = std::chrono::minutes(5);
  Controller controller = Make(configuration);
  std::string text;
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ(huge, text);
  EXPECT_EQ(0, controller.Replace(huge, huge + "y"));
  EXPECT_EQ(huge + "y", File());
  std::filesystem::resize_file(m_server.Files().Path("snmpd.conf"), drivers::ConfigFile::kMaximumSize + 1);
  EXPECT_EQ(drivers::FileStatusOfErrno(EFBIG), controller.Read(text));
}

TEST_F(AController, RunsCommandsAndTellsHowTheyEnded) {
  Controller controller = Make();
  EXPECT_EQ(0, controller.RunCommand({"touch", m_server.Files().Path("it's; touched")}));
  EXPECT_EQ(Names{"it's; touched"}, m_server.Files().Names());
  EXPECT_EQ(drivers::kCommandFailed, controller.RunCommand({"false"}));
  EXPECT_EQ(drivers::kCommandFailed, controller.RunCommand({"no-such-program"}));
  EXPECT_EQ(drivers::kCommandFailed, controller.RunCommand({"sh", "-c", "kill -9 $$"}));
  EXPECT_EQ(drivers::kNoCommand, controller.RunCommand({}));
}

TEST(AControllerWithFewSessions, IsServed) {
  for (const char* const most : {"1", "2", "3"}) {
    SshServer::Options options;
    options.lines = std::string("MaxSessions ") + most + "\n";
    SshServer server(options);
    server.Files().Write("snmpd.conf", "first\n");
    server.GiveFiles();
    Controller controller(ConfigurationFor(server, server.Port()), [](const std::string& line) { ADD_FAILURE() << line; });
    std::string text = "first\n";
    for (const char* const next : {"second\n", "third\n"}) {
      EXPECT_EQ(0, controller.Replace(text, next)) << most;
      EXPECT_EQ(0, controller.RunCommand({"true"})) << most;
      EXPECT_EQ(0, controller.RunCommand({"true"})) << most;
      EXPECT_EQ(0, controller.Read(text)) << most;
      EXPECT_EQ(next, text);
    }
    // With one, the server may still be busy with the end of the last one when the next one comes.
    EXPECT_TRUE(server.Logins() == 1 || std::string(most) == "1") << most << ": " << server.Logins();
  }
}

TEST_F(AController, DoesNotWaitForWhatACommandLeavesRunning) {
  Controller controller = Make();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(0, controller.RunCommand({"sh", "-c", "sleep 60 & exit 0"}));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

TEST_F(AController, IsToldBySudoWhatItMayDo) {
  TemporaryFolder programs;
  programs.Write("sudo", "#!/bin/sh\n[ \"$1 $2\" = '-n --' ] || exit 1\nshift 2\nUSED=yes exec \"$@\"\n");
  programs.Write("used", "#!/bin/sh\n[ \"$USED\" = yes ]\n");
  for (const char* const name : {"sudo", "used"}) {
    ASSERT_EQ(0, ::chmod(programs.Path(name).c_str(), 0755));
  }
  SshServer::Options options;
  options.path = programs.Path() + ":";
  SshServer server(options);
  SshConfiguration configuration = ConfigurationFor(server, server.Port());
  configuration.file = server.Files().Path("snmpd.conf");
  EXPECT_EQ(drivers::kCommandFailed, Make(configuration).RunCommand({"used"}));
  for (const auto sudo : {SshConfiguration::Sudo::Commands, SshConfiguration::Sudo::All}) {
    configuration.sudo = sudo;
    EXPECT_EQ(0, Make(configuration).RunCommand({"used"}));
  }
  EXPECT_EQ(0, Make(configuration).Replace("", "new"));
  programs.Write("sudo", "#!/bin/sh\necho 'sudo: a password is required' >&2\nexit 1\n");
  std::string text;
  EXPECT_EQ(drivers::kControllerUnfit, Make(configuration).Read(text));
  EXPECT_EQ(drivers::kControllerUnfit, Make(configuration).Replace("new", "newer"));
  EXPECT_EQ("new", server.Files().Read("snmpd.conf"));
  configuration.sudo = SshConfiguration::Sudo::Commands;
  EXPECT_EQ(0, Make(configuration).Read(text));
}

TEST_F(AController, NeedsOnlyTheShellAndTheProgramsOfABusybox) {
  TemporaryFolder programs;
  TemporaryFolder shell;
  ASSERT_EQ(0, RunInShell(drivers::QuoteWords({"busybox", "--install", "-s", programs.Path()})).status);
  shell.Write("shell", "#!/bin/busybox sh\nexec /bin/busybox sh \"$@\"\n");
  ASSERT_EQ(0, ::chmod(shell.Path("shell").c_str(), 0755));
  SshServer::Options options;
  options.shell = shell.Path("shell");
  options.path = programs.Path();
  options.onlyPath = true;
  SshServer server(options);
  server.Files().Write("snmpd.conf", "old");
  server.GiveFiles();
  ASSERT_EQ(0, ::chmod(server.Files().Path("snmpd.conf").c_str(), 0640));
  Controller controller = Make(ConfigurationFor(server, server.Port()));
  std::string text;
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ("old", text);
  EXPECT_EQ(drivers::kFileWasChanged, controller.Replace("other", "new"));
  EXPECT_EQ(0, controller.Replace("old", "new"));
  EXPECT_EQ("new", server.Files().Read("snmpd.conf"));
  EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(server.Files().Path("snmpd.conf")).permissions());
  EXPECT_EQ(Names{"snmpd.conf"}, server.Files().Names());
  std::filesystem::remove(server.Files().Path("snmpd.conf"));
  EXPECT_EQ(0, controller.Replace("", "new"));
  EXPECT_EQ("new", server.Files().Read("snmpd.conf"));
}

TEST_F(AController, IgnoresWhatTheStartFilesOfAShellPrint) {
  TemporaryFolder programs;
  programs.Write("login", "#!/bin/sh\necho Welcome\necho to the >&2\nexec /bin/sh \"$@\"\n");
  ASSERT_EQ(0, ::chmod(programs.Path("login").c_str(), 0755));
  SshServer::Options options;
  options.shell = programs.Path("login");
  SshServer server(options);
  server.Files().Write("snmpd.conf", "old");
  server.GiveFiles();
  Controller controller = Make(ConfigurationFor(server, server.Port()));
  std::string text;
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ("old", text);
  EXPECT_EQ(0, controller.Replace("old", "new"));
}

TEST_F(AController, LogsInWithTheKeysOfTheAgent) {
  TemporaryFolder folder;
  const std::string socket = folder.Path("agent");
  devhost::ProcessImage image;
  image.program = "/usr/bin/ssh-agent";
  image.arguments = {"ssh-agent", "-D", "-a", socket};
  const devhost::FileDescriptor output(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  image.output = output.Get();
  const devhost::KeptProcess agent(image);
  ::setenv("SSH_AUTH_SOCK", socket.c_str(), 1);
  // The socket is there before anybody listens on it. An agent without keys says so with this status.
  ASSERT_TRUE(Eventually([] { return RunInShell("ssh-add -l").status == 1; }));
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  configuration.login.key.clear();
  std::string text;
  EXPECT_EQ(drivers::kLoginRefused, Make(configuration).Read(text));
  EXPECT_EQ(0, RunInShell(drivers::QuoteWords({"ssh-add", "-q", m_server.Key()})).status);
  EXPECT_EQ(0, Make(configuration).Read(text));
  ::unsetenv("SSH_AUTH_SOCK");
  EXPECT_EQ(drivers::kLoginRefused, Make(configuration).Read(text));
}

TEST_F(AController, RefusesAKeyThatItCannotUse) {
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  std::string text;
  configuration.login.key = m_server.OtherKey();
  EXPECT_EQ(drivers::kLoginRefused, Make(configuration).Read(text));
  configuration.login.key = m_server.LockedKey();
  EXPECT_EQ(drivers::kKeyFileUnusable, Make(configuration).Read(text));
  configuration.login.key = m_server.Files().Path("missing");
  EXPECT_EQ(drivers::kKeyFileUnusable, Make(configuration).Read(text));
  EXPECT_EQ("the controller 127.0.0.1:" + std::to_string(m_server.Port()) + ": the controller does not accept the login",
            m_log.front());
}

TEST_F(AController, IsNotTrustedBeforeSomebodySaysSo) {
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  // Also a folder that is missing, and what the library would take for an escape.
  configuration.server.knownHosts = m_server.Files().Path("%d own/known hosts");
  std::string text;
  EXPECT_EQ(drivers::kHostKeyUnknown, Make(configuration).Read(text));
  EXPECT_NE(std::string::npos, m_log.front().find(" (ssh-ed25519 " + m_server.Fingerprint() + ")")) << m_log.front();
  Controller controller = Make(configuration);
  Controller::HostKey hostKey;
  EXPECT_EQ(0, controller.AskHostKey(hostKey));
  EXPECT_EQ("ssh-ed25519", hostKey.type);
  EXPECT_EQ(m_server.Fingerprint(), hostKey.fingerprint);
  EXPECT_EQ(drivers::SshConnection::HostKey::Unknown, hostKey.state);
  EXPECT_EQ(drivers::kHostKeyDiffers, controller.TrustHostKey("SHA256:another"));
  EXPECT_EQ(drivers::kHostKeyUnknown, controller.Read(text));
  EXPECT_EQ(0, controller.TrustHostKey(hostKey.fingerprint));
  EXPECT_EQ(0, controller.Read(text));
  EXPECT_EQ(0, controller.AskHostKey(hostKey));
  EXPECT_EQ(drivers::SshConnection::HostKey::Known, hostKey.state);
  EXPECT_EQ(0, controller.TrustHostKey(hostKey.fingerprint));
  const std::string known = m_server.Files().Read("%d own/known hosts");
  EXPECT_EQ(1, std::count(known.begin(), known.end(), '\n')) << known;
}

TEST_F(AController, WithARevokedHostKeyIsRefusedWhereverItIsKnown) {
  const std::string known = m_server.KnownHosts(m_server.Port());
  const std::string line = m_server.Files().Read(known);
  const std::string key = line.substr(line.find(' ') + 1);
  WriteFile("old");
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  configuration.server.knownHosts = m_server.Files().Path("known");
  for (const std::string& before : {line, std::string()}) {
    for (const std::string& revoked : {"@revoked * " + key, "# a comment\n\n \t@revoked\telsewhere.example.net " + key,
                                       "@revoked |1|c2FsdA==|aGFzaA== " + key + "[other]:22 ssh-ed25519 AAAA\n",
                                       "@revoked * " + key.substr(0, key.size() - 1)}) {
      m_server.Files().Write("known", before + revoked);
      std::string text;
      EXPECT_EQ(drivers::kHostKeyDiffers, Make(configuration).Read(text)) << revoked;
      EXPECT_EQ(drivers::kHostKeyDiffers, Make(configuration).Replace("old", "new")) << revoked;
      EXPECT_EQ(drivers::kHostKeyDiffers, Make(configuration).TrustHostKey(m_server.Fingerprint())) << revoked;
      EXPECT_EQ(before + revoked, m_server.Files().Read("known"));
    }
  }
  EXPECT_EQ("old", File());
}

TEST_F(AController, IsNotRefusedForOtherMarkedLines) {
  const std::string line = m_server.Files().Read(m_server.KnownHosts(m_server.Port()));
  const std::string key = line.substr(line.find(' ') + 1);
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  configuration.server.knownHosts = m_server.Files().Path("known");
  std::string text;
  for (const std::string& other : {"@cert-authority * " + key, "#@revoked * " + key,
                                   std::string("@revoked * ssh-ed25519 AAAA\n"), std::string("@revoked")}) {
    m_server.Files().Write("known", line + other);
    EXPECT_EQ(0, Make(configuration).Read(text)) << other;
  }
  // It makes no key known, either.
  m_server.Files().Write("known", "@cert-authority * " + key);
  EXPECT_EQ(drivers::kHostKeyUnknown, Make(configuration).Read(text));
}

TEST_F(AController, IsNotReachedWithoutItsKnownHosts) {
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  configuration.server.knownHosts = m_server.Files().Path();
  std::string text;
  EXPECT_EQ(drivers::kKnownHostsUnusable, Make(configuration).Read(text));
}

TEST_F(AController, WithAnotherHostKeyIsRefusedForGood) {
  SshConfiguration configuration = ConfigurationFor(m_server, m_server.Port());
  configuration.server.knownHosts = m_server.KnownHosts(m_server.Port(), false);
  WriteFile("old");
  std::string text;
  EXPECT_EQ(drivers::kHostKeyDiffers, Make(configuration).Read(text));
  EXPECT_EQ(drivers::kHostKeyDiffers, Make(configuration).Replace("old", "new"));
  EXPECT_EQ(drivers::kHostKeyDiffers, Make(configuration).RunCommand({"true"}));
  EXPECT_EQ(drivers::kHostKeyDiffers, Make(configuration).TrustHostKey(m_server.Fingerprint()));
  EXPECT_EQ("old", File());
}

}  // namespace

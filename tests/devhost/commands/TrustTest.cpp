#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/devhost/commands/CommandsFixture.h"
#ifdef SSH_SNMPD_MODULE
#include "tests/drivers/support/SshServer.h"
#endif

namespace devhost {
namespace {

using testing::HasSubstr;

using TrustCommand = CommandsFixture;

TEST_F(TrustCommand, RefusesADeviceWithoutAHostKey) {
  const std::string project = File("project.xml",
                                   "<project><driver id='12' name='kitchen' module='simulated_device.so'>"
                                   "<config folder='{project}'/></driver></project>");
  const Outcome outcome = Run({"trust", "--project", project, "--module-dir", MODULE_FOLDER, "kitchen"});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, HasSubstr("the controller of kitchen has no host key; allowed: "));
  EXPECT_EQ(Run({"trust", "--project", project, "--module-dir", MODULE_FOLDER, "cellar"}).status, ExitStatus::Wrong);
}

#ifdef SSH_SNMPD_MODULE
TEST_F(TrustCommand, ShowsNoSecretOfTheProject) {
  const std::string project = File("project.xml",
                                   "<project><driver id='12' name='kitchen' module='ssh_snmpd.so'>"
                                   "<config host='127.0.0.1' port='hidden9' user='a' knownHosts='{project}/known'/>"
                                   "</driver></project>");
  std::vector<std::string> line = {"trust", "--project", project, "--module-dir", MODULE_FOLDER, "kitchen"};
  const Outcome outcome = Run(line);
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.errors, HasSubstr("port is \"*****"));
  EXPECT_THAT(outcome.errors, testing::Not(HasSubstr("hidden9")));
  line.emplace_back("--show-secrets");
  EXPECT_THAT(Run(line).errors, HasSubstr("port is \"hidden9\""));
}

// A device whose controller is the distribution's SSH server.
class TrustOfAServer : public CommandsFixture {
 protected:
  std::string Project(const std::string& knownHosts) const {
    return File("project.xml",
                "<project><driver id='12' name='kitchen' module='ssh_snmpd.so'><config host='127.0.0.1' port='" +
                    std::to_string(server.Port()) + "' user='controller' knownHosts=\"" + knownHosts +
                    "\"/></driver></project>");
  }
  Outcome Trust(const std::vector<std::string>& more = {}) const { return RunOn("yes\n", Line(more)); }
  std::vector<std::string> Line(const std::vector<std::string>& more) const {
    std::vector<std::string> line = {"trust",        "--project",   folder.Path("project.xml"),
                                     "--module-dir", MODULE_FOLDER, "kitchen"};
    line.insert(line.end(), more.begin(), more.end());
    return line;
  }
  // With a terminal as standard input, at which somebody types that.
  Outcome TrustAtATerminal(const std::string& typed) const {
    const FileDescriptor before(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3));
    const FileDescriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    EXPECT_EQ(::grantpt(master.Get()), 0);
    EXPECT_EQ(::unlockpt(master.Get()), 0);
    const FileDescriptor slave(::open(::ptsname(master.Get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ::dup2(slave.Get(), STDIN_FILENO);
    EXPECT_EQ(::write(master.Get(), typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    Outcome outcome = Run(Line({}));
    ::dup2(before.Get(), STDIN_FILENO);
    return outcome;
  }

  const SshServer server;
};

TEST_F(TrustOfAServer, ShowsTheFingerprintAndNeedsATerminalToAsk) {
  Project(folder.Path("known"));
  const Outcome outcome = Trust();
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out,
            "127.0.0.1:" + std::to_string(server.Port()) + " has the host key\nssh-ed25519 " + server.Fingerprint() + "\n");
  EXPECT_EQ(outcome.errors,
            "devhost: standard input is not a terminal, so nobody can be asked; give the fingerprint with --yes\n");
  EXPECT_FALSE(::access(folder.Path("known").c_str(), F_OK) == 0);
}

TEST_F(TrustOfAServer, TakesTheFingerprintForAnAnswer) {
  Project(folder.Path("known"));
  const Outcome other = Trust({"--yes", "SHA256:other"});
  EXPECT_EQ(other.status, ExitStatus::Failed);
  EXPECT_THAT(other.errors, HasSubstr("this is not the fingerprint that was given; nothing was added"));
  EXPECT_FALSE(::access(folder.Path("known").c_str(), F_OK) == 0);
  const Outcome outcome = Trust({"--yes", server.Fingerprint()});
  EXPECT_EQ(outcome.status, ExitStatus::Good) << outcome.errors;
  EXPECT_THAT(outcome.out, HasSubstr("added to " + folder.Path("known") + "\n"));
  const Outcome again = Trust();
  EXPECT_EQ(again.status, ExitStatus::Good);
  EXPECT_THAT(again.out, HasSubstr("It is known already in " + folder.Path("known")));
}

TEST_F(TrustOfAServer, AsksAtATerminalAndTakesOnlyAYes) {
  Project(folder.Path("known"));
  const Outcome no = TrustAtATerminal("y\n");
  EXPECT_EQ(no.status, ExitStatus::Failed);
  EXPECT_THAT(no.out, HasSubstr("Is this the host key of the controller? Type yes to trust it: "));
  EXPECT_EQ(no.errors, "devhost: not trusted; nothing was added\n");
  EXPECT_FALSE(::access(folder.Path("known").c_str(), F_OK) == 0);
  EXPECT_EQ(TrustAtATerminal("yes\n").status, ExitStatus::Good);
  EXPECT_EQ(Trust().status, ExitStatus::Good);
}

TEST_F(TrustOfAServer, NeverTakesAnotherKeyThanTheKnownOne) {
  Project(server.KnownHosts(server.Port(), false));
  const Outcome outcome = Trust({"--yes", server.Fingerprint()});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.errors, HasSubstr("another host key is known in "));
}

TEST_F(TrustOfAServer, NeverTakesARevokedKey) {
  std::ifstream stream(server.KnownHosts(server.Port()));
  const std::string line(std::istreambuf_iterator<char>(stream), {});
  File("known", "@revoked *" + line.substr(line.find(' ')));
  Project(folder.Path("known"));
  const Outcome outcome = Trust({"--yes", server.Fingerprint()});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.errors, HasSubstr(", or this one is revoked there"));
  EXPECT_EQ("@revoked *" + line.substr(line.find(' ')), folder.Read("known"));
}

TEST_F(TrustOfAServer, SaysWhyTheControllerCannotBeAsked) {
  File("project.xml",
       "<project><driver id='12' name='kitchen' module='ssh_snmpd.so'>"
       "<config host='127.0.0.1' port='1' user='u' knownHosts='/k'/></driver></project>");
  const Outcome outcome = Trust();
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.errors, HasSubstr("the controller 127.0.0.1:1 cannot be reached: Connection refused\n"));
}
#endif

}  // namespace
}  // namespace devhost

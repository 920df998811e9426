// With the distribution's snmpd.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/devhost/commands/DeviceFixture.h"
#include "tests/devhost/support/SnmpDaemon.h"
#include "tests/drivers/support/SnmpResponder.h"
#include "tests/e2e/TrapReceiver.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

// The argument lists of all processes that can be seen.
std::vector<std::string> ArgumentLists() {
  std::vector<std::string> lists;
  std::error_code error;
  for (fs::directory_iterator entry("/proc", error), end; !error && entry != end; entry.increment(error)) {
    const std::ifstream file(entry->path() / "cmdline", std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    lists.push_back(text.str());
  }
  return lists;
}

class ProbeCommand : public DeviceFixture {
 protected:
  // The file's own socket cannot be had beside other tests.
  ProbeCommand() { File("kitchen/snmpd.conf", Conf() + "agentXSocket unix:/nonexistent\n"); }
};

TEST_F(ProbeCommand, SaysThatAllIsAsConfigured) {
  const SnmpDaemon daemon(Conf());
  const Outcome outcome = Do("probe", {"--address", daemon.Address()});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_THAT(outcome.out, HasSubstr("ok      name             \"attic\"\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\nkitchen at " + daemon.Address() + " is as configured\n"));
}

TEST_F(ProbeCommand, SaysWhatDiffers) {
  const SnmpDaemon daemon("rocommunity hidden\nsysName elsewhere\n");
  const Outcome outcome = Do("probe", {"--address", daemon.Address(), "--json"});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, AllOf(StartsWith("{\"device\":\"kitchen\",\"address\":\"" + daemon.Address() + "\","),
                                 HasSubstr("{\"name\":\"name\",\"verdict\":\"differs\",\"configured\":\"attic\",\"served\":"
                                           "\"elsewhere\",\"reason\":\"\"},"),
                                 HasSubstr("],\"messages\":[]}\n")));
}

TEST_F(ProbeCommand, AsksTheDaemonOfAFileWithoutAProject) {
  const SnmpDaemon daemon(Conf());
  const std::string file = File("kitchen/snmpd.conf", Conf() + "agentaddress " + daemon.Address() + "\n");
  const Outcome outcome = Run({"probe", "--module-dir", MODULE_FOLDER, "--file", file});
  EXPECT_EQ(outcome.status, ExitStatus::Good) << outcome.errors;
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("ok      name             \"attic\"\n"),
                                 HasSubstr("\n" + file + " at " + daemon.Address() + " is as configured\n")));
  const Outcome both = Run({"probe", "--module-dir", MODULE_FOLDER, "--file", file, "kitchen"});
  EXPECT_EQ(both.status, ExitStatus::Wrong);
  EXPECT_THAT(both.errors, HasSubstr("a device and --file cannot stand together"));
}

TEST_F(ProbeCommand, EndsWithTwoWhereThereIsNothingToAsk) {
  const Outcome outcome = Do("probe");
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.errors, "devhost: nothing to ask: the project gives kitchen no daemon; --address HOST:PORT names one\n");
  EXPECT_THAT(Do("probe", {"--address", "::1"}).errors, HasSubstr("\"::1\" is not the address of a daemon"));
}

TEST_F(ProbeCommand, ShowsItsCommunityInNoListOfArguments) {
  const std::string port = e2e::FreePort();
  // It is known to be there and answers nothing else, so the program has to wait.
  const SnmpResponder slow(static_cast<std::uint16_t>(std::stoul(port)), SnmpResponder::Report());
  const std::string address = "127.0.0.1:" + port;
  const std::string community = "communityOfThisTest";
  std::string text = Conf();
  text.replace(text.find("rocommunity  hidden"), 19, "rocommunity  " + community);
  File("kitchen/snmpd.conf", text);
  e2e::Background program(
      {DEVHOST_PROGRAM, "probe", "--module-dir", MODULE_FOLDER, "--project", project, "kitchen", "--address", address}, {},
      folder.Path("output"));
  std::size_t seen = 0;
  while (!program.Ended()) {
    for (const std::string& list : ArgumentLists()) {
      seen += list.find(address) != std::string::npos ? 1U : 0U;
      EXPECT_EQ(list.find(community), std::string::npos) << list;
    }
  }
  EXPECT_GT(seen, 0U);
  EXPECT_THAT(folder.Read("output"), HasSubstr("read community   does not work"));
}

}  // namespace
}  // namespace devhost

// With the built modules, and the distribution's snmpd and snmptrapd.
#include "devhost/operations/Probe.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "devhost/operations/Explanation.h"
#include "devhost/operations/History.h"
#include "devhost/operations/Rotation.h"
#include "tests/devhost/operations/Kitchen.h"
#include "tests/devhost/support/SnmpDaemon.h"
#include "tests/drivers/support/SnmpResponder.h"
#include "tests/e2e/TrapReceiver.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Property;

constexpr char kTexts[] =
    "<snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting>"
    "<snmpCommunityWriteSetting>hidden2</snmpCommunityWriteSetting>"
    "<snmpSysContactSetting>Ada</snmpSysContactSetting><snmpSysNameSetting>kitchen</snmpSysNameSetting>";

std::string Targets(const std::vector<std::pair<std::string, std::string>>& targets) {
  std::string all;
  for (const auto& [host, port] : targets) {
    all += "<trapTarget><target>" + host + "</target><community>hidden3</community><port>" + port + "</port></trapTarget>";
  }
  return "<snmpTrapTargets>" + all + "</snmpTrapTargets>";
}

class AProbe : public AKitchen {
 protected:
  AProbe() {
    means.patience = {std::chrono::seconds(2), 1};  // on a busy machine, too
    Configure("");
  }

  // Gives settings to the device, whose file then has a section with them.
  void Configure(const std::string& more) {
    change.accepted = {"trap-host-wrong"};
    SetSettings(kTexts + more);
    ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  }
  // Starts a daemon with the file of the device as it is.
  void Serve(const std::string& more = "") {
    daemon = std::make_unique<SnmpDaemon>(File(), more);
    means.address = daemon->Address();
  }
  void AddToFile(const std::string& line) { folder.Write("kitchen/snmpd.conf", File() + line + "\n"); }
  ProbeReport Probe() const { return ProbeDevice(change.target, means); }
  // What was found for each thing: "contact: good, Ada".
  std::vector<std::string> Found() const {
    std::vector<std::string> all;
    for (const ProbeItem& item : Probe().items) {
      const char* const verdict = item.verdict == ProbeItem::Verdict::Good      ? "good"
                                  : item.verdict == ProbeItem::Verdict::Differs ? "differs"
                                                                                : "not asked";
      all.push_back(item.name + ": " + verdict + ", " + item.served + (item.reason.empty() ? "" : "; " + item.reason));
    }
    return all;
  }

  ProbeMeans means;
  std::unique_ptr<SnmpDaemon> daemon;
};

TEST_F(AProbe, FindsADaemonAsConfigured) {
  AddToFile("agentXSocket tcp:127.0.0.1:" + e2e::FreePort());
  Serve("agentXSocket " + Explanation(File(), "", false).LastValue("agentxsocket") + "\n");
  EXPECT_EQ(Probe().verdict, ProbeReport::Verdict::AsConfigured);
  EXPECT_EQ(Probe().address, daemon->Address());
  EXPECT_THAT(Found(),
              ElementsAre("contact: good, Ada", "name: good, kitchen", "location: not asked, Unknown",
                          "read community: good, works", "write community: good, works", "AgentX socket: good, listens"));
}

TEST_F(AProbe, ChangesNothingOnTheDaemon) {
  Serve();
  const SnmpClient reader(Resolve({"127.0.0.1", daemon->Port()}).value(), "hidden1");
  const std::vector<Oid> texts = {{1, 3, 6, 1, 2, 1, 1, 1, 0}, {1, 3, 6, 1, 2, 1, 1, 5, 0}};
  const SnmpReply before = reader.Get(texts);
  const std::string file = File();
  Probe();
  EXPECT_EQ(reader.Get(texts).values, before.values);
  EXPECT_EQ(File(), file);
  daemon->Stop();
  EXPECT_THAT(testsupport::ScratchFolder::ReadFile(daemon->Persistent() + "/snmpd.conf"),
              AllOf(HasSubstr("engineBoots"), Not(HasSubstr("psys"))));
}

TEST_F(AProbe, NamesTheForeignLineThatShadowsAContact) {
  AddToFile("sysContact elsewhere");
  Serve();
  EXPECT_EQ(Probe().verdict, ProbeReport::Verdict::Differs);
  const std::string file = File();
  const std::string line = std::to_string(std::count(file.begin(), file.end(), '\n'));
  EXPECT_THAT(Found(), Contains("contact: differs, elsewhere; shadowed by line " + line + " of the foreign text"));
}

TEST_F(AProbe, DoesNotExplainADaemonWithAnOlderFile) {
  Serve();
  SetSettings(std::string(kTexts) + "<snmpSysLocationSetting>attic</snmpSysLocationSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  EXPECT_THAT(Found(), Contains("location: differs, Unknown"));
}

TEST_F(AProbe, FindsAReadCommunityThatDoesNotWork) {
  daemon = std::make_unique<SnmpDaemon>("rocommunity other\nrwcommunity hidden2\nsysContact Ada\nsysName kitchen\n");
  means.address = daemon->Address();
  EXPECT_THAT(Found(), AllOf(Contains("contact: good, Ada"), Contains("read community: differs, does not work"),
                             Contains("write community: good, works")));
}

TEST_F(AProbe, FindsAWriteCommunityThatOnlyReads) {
  daemon = std::make_unique<SnmpDaemon>("rocommunity hidden1\nrocommunity hidden2\nsysContact Ada\nsysName kitchen\n");
  means.address = daemon->Address();
  EXPECT_THAT(Found(), AllOf(Contains("read community: good, works"), Contains("write community: differs, does not work")));
}

TEST_F(AProbe, FindsThatNobodyKnowsTheCommunities) {
  daemon = std::make_unique<SnmpDaemon>("rocommunity other\n");
  means.address = daemon->Address();
  EXPECT_EQ(Probe().verdict, ProbeReport::Verdict::Differs);
  EXPECT_THAT(Found(), Contains("name: differs, not served to the configured communities"));
}

TEST_F(AProbe, FindsThatNobodyListensOnTheAgentXSocket) {
  AddToFile("agentXSocket tcp:127.0.0.1:" + e2e::FreePort());
  Serve();
  EXPECT_THAT(Found(), Contains("AgentX socket: differs, nobody listens"));
}

TEST_F(AProbe, DoesNotAskForASocketThatHasNoPort) {
  AddToFile("agentXSocket unix:/run/agentx");
  Serve();
  EXPECT_THAT(Found(), Contains("AgentX socket: not asked, not asked: only TCP sockets can be"));
}

TEST_F(AProbe, SendsATrapToEachTarget) {
  e2e::TrapReceiver receiver;
  const std::string dead = e2e::FreePort();
  Configure(
      Targets({{"127.0.0.1", receiver.Port()}, {"127.0.0.1", dead}, {"192.0.2.300", "162"}, {"tcp:127.0.0.1", "162"}}));
  Serve("agentXSocket unix:" + folder.Path("agentx") + "\n");
  receiver.Traps();
  EXPECT_EQ(Probe().verdict, ProbeReport::Verdict::Differs);
  EXPECT_THAT(receiver.Traps(), Contains(e2e::Trap{".1.3.6.1.4.1.8072.2.3.0.1", "hidden3"}));
  EXPECT_THAT(Found(), AllOf(Contains("trap to 127.0.0.1:" + receiver.Port() + ": good, sent"),
                             Contains("trap to 127.0.0.1:" + dead + ": differs, refused"),
                             Contains(HasSubstr("differs, name not found")),
                             Contains(HasSubstr("not asked, not sent: only UDP is tried"))));
}

TEST_F(AProbe, SendsNoTrapsWhereItMayNot) {
  Configure(Targets({{"127.0.0.1", e2e::FreePort()}}));
  Serve();
  means.sendsTraps = false;
  EXPECT_THAT(Found(), Not(Contains(HasSubstr("trap"))));
}

TEST_F(AProbe, SaysWhenTheDaemonIsOff) {
  means.address = "127.0.0.1:" + e2e::FreePort();
  const ProbeReport report = Probe();
  EXPECT_EQ(report.verdict, ProbeReport::Verdict::Unknown);
  EXPECT_THAT(report.items, IsEmpty());
  EXPECT_THAT(report.messages, ElementsAre("the daemon at " + means.address + " cannot be asked: refused"));
}

// A restart command need not wait for the daemon.
TEST_F(AProbe, WaitsAfterAChangeForADaemonThatComesBack) {
  AddToFile("agentXSocket unix:" + folder.Path("agentx"));
  Serve();
  means.patience = {std::chrono::milliseconds(100), 20};
  ASSERT_TRUE(DoesDaemonAnswer(change.target, means, File()));
  const DeviceLook look = LookAtDevice(change.target);
  ::kill(daemon->Pid(), SIGSTOP);
  EXPECT_FALSE(DoesDaemonAnswer(change.target, means, File()));
  std::thread later([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    ::kill(daemon->Pid(), SIGCONT);
  });
  EXPECT_EQ(ProbeAfterChange(change.target, means, look, true).verdict, ProbeReport::Verdict::AsConfigured);
  later.join();
}

TEST_F(AProbe, SaysAfterAChangeThatADaemonHasGone) {
  Serve();
  const DeviceLook look = LookAtDevice(change.target);
  daemon->Stop();
  means.comeback = std::chrono::milliseconds(200);
  const ProbeReport gone = ProbeAfterChange(change.target, means, look, true);
  EXPECT_EQ(gone.verdict, ProbeReport::Verdict::Gone);
  EXPECT_THAT(gone.messages,
              ElementsAre("the daemon at " + means.address + " answered before the change, and does not answer after it"));
  EXPECT_EQ(ProbeAfterChange(change.target, means, look, false).verdict, ProbeReport::Verdict::Unknown);
}

TEST_F(AProbe, SaysWhenNobodyAnswersOrTheNameIsNotKnown) {
  const std::string port = e2e::FreePort();
  const SnmpResponder silent(static_cast<std::uint16_t>(std::stoul(port)), "");
  means.address = "127.0.0.1:" + port;
  EXPECT_THAT(Probe().messages, ElementsAre(HasSubstr("no answer")));
  means.address = "192.0.2.300";
  EXPECT_THAT(Probe().messages, ElementsAre("the daemon at 192.0.2.300:161 cannot be asked: name not found"));
}

TEST_F(AProbe, HasNothingToAskWithoutADaemon) {
  EXPECT_EQ(Probe().verdict, ProbeReport::Verdict::Unknown);
  EXPECT_THAT(Probe().messages, ElementsAre(HasSubstr("nothing to ask")));
}

TEST_F(AProbe, KnowsTheDaemonOfALocalDevice) {
  Serve();
  const std::string folderOfIt = folder.Path("kitchen");
  change.target.chosen.device = {12, "kitchen", Module("local_snmpd"),
                                 "<config folder='" + folderOfIt + "' port='" + daemon->Port() + "'/>"};
  means.address.clear();
  EXPECT_EQ(Probe().verdict, ProbeReport::Verdict::AsConfigured);
  EXPECT_THAT(Found(), Not(Contains(HasSubstr("AgentX"))));
}

TEST_F(AProbe, HasNothingToAskWithWhereNoCommunityIsSet) {
  SetSettings("<snmpSysNameSetting>kitchen</snmpSysNameSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  daemon = std::make_unique<SnmpDaemon>("rocommunity other\n");
  means.address = daemon->Address();
  EXPECT_EQ(Probe().verdict, ProbeReport::Verdict::Unknown);
  EXPECT_THAT(Probe().messages, ElementsAre("no community is set on kitchen: nobody can ask what is served"));
}

TEST_F(AProbe, ShowsNoCommunities) {
  daemon = std::make_unique<SnmpDaemon>("rocommunity hidden1\nsysContact hidden2\nsysName x\n");
  means.address = daemon->Address();
  for (const ProbeItem& item : Probe().items) {
    EXPECT_THAT(item.configured + item.served + item.reason, Not(HasSubstr("hidden")));
  }
}

// A rotation whose old community an included file has, too.
TEST_F(AProbe, OfARotationNamesThePlacesWhereACommunityStays) {
  const Change start = StartRotation(change.target, {"hidden4", ""});
  ASSERT_EQ(ApplyChange(start, PlanChange(start), kNow).verdict, Applied::Verdict::Done);
  const std::string part = folder.Write("conf.d/part.conf", "rocommunity hidden1\n");
  AddToFile("includeDir " + folder.Path("conf.d"));
  Serve();
  const RotationLook look = LookAtRotation(change.target, means);
  EXPECT_THAT(look.probe.messages, ElementsAre(part + ":1 has the old read community, too: it stays valid there"));
  const Change finish = FinishRotation(change.target);
  ASSERT_EQ(ApplyChange(finish, PlanChange(finish), kNow).verdict, Applied::Verdict::Done);
  ProbeReport report;
  ProbeLeft(change.target, means, {"hidden1", ""}, RotationEnd::Finish, report);
  ASSERT_EQ(report.items.size(), 1U);
  EXPECT_EQ(report.items[0].reason, part + ":1 lets it in");
}

}  // namespace
}  // namespace devhost

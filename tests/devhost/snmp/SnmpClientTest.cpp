// With the distribution's snmpd and snmptrapd.
#include "devhost/snmp/SnmpClient.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <syslog.h>

#include <chrono>
#include <filesystem>

#include "tests/devhost/support/SnmpDaemon.h"
#include "tests/e2e/TrapReceiver.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::Optional;

const Oid kDescription = {1, 3, 6, 1, 2, 1, 1, 1, 0};
const Oid kContact = {1, 3, 6, 1, 2, 1, 1, 4, 0};
const Oid kLocation = {1, 3, 6, 1, 2, 1, 1, 6, 0};
const Oid kServices = {1, 3, 6, 1, 2, 1, 1, 7, 0};
const Oid kNothing = {1, 3, 6, 1, 2, 1, 1, 99, 0};
const Oid kHeartbeat = {1, 3, 6, 1, 4, 1, 8072, 2, 3, 0, 1};
const Patience kPatient = {std::chrono::milliseconds(10000), 1};
const Patience kImpatient = {std::chrono::milliseconds(100), 1};

class AClient : public testing::Test {
 protected:
  SnmpClient As(const std::string& community, const Patience& patience = kPatient) const {
    return SnmpClient(Resolve({"127.0.0.1", daemon.Port()}).value(), community, patience);
  }

  const SnmpDaemon daemon{"rocommunity reads\nrwcommunity \"writes with blanks\"\nsysContact Ada\nsysServices 72\n"};
};

TEST_F(AClient, GetsTextsAndNumbers) {
  const SnmpReply reply = As("reads").Get({kContact, kServices, kNothing});
  EXPECT_EQ(reply.end, UdpEnd::Answered);
  EXPECT_EQ(reply.error, 0);
  EXPECT_THAT(reply.values, ElementsAre(Optional(std::string("Ada")), Optional(std::string("72")), std::nullopt));
}

TEST_F(AClient, HearsNothingWithAWrongCommunity) {
  const SnmpReply reply = As("guesses", kImpatient).Get({kContact, kServices});
  EXPECT_EQ(reply.end, UdpEnd::Silent);
  EXPECT_EQ(reply.values.size(), 2U);
}

TEST_F(AClient, SetsAnObject) {
  EXPECT_EQ(As("writes with blanks").Set(kLocation, "attic").error, 0);
  EXPECT_THAT(As("reads").Get({kLocation}).values, ElementsAre(Optional(std::string("attic"))));
}

TEST_F(AClient, HearsWhyAnObjectIsNotSet) {
  EXPECT_EQ(As("writes with blanks").Set(kDescription, "").error, kNotWritable);
  EXPECT_EQ(As("reads").Set(kDescription, "").error, kNoAccess);
  EXPECT_EQ(As("guesses", kImpatient).Set(kDescription, "").end, UdpEnd::Silent);
}

TEST_F(AClient, AsksAllCommunitiesAtOnce) {
  const Patience patience = {std::chrono::milliseconds(1000), 2};
  std::vector<SnmpReply> replies;
  std::chrono::steady_clock::duration time{};
  // A busy machine takes longer now and then, but not each time.
  for (int i = 0; i == 0 || (i < 10 && time >= 4 * patience.wait); ++i) {
    const auto begin = std::chrono::steady_clock::now();
    replies = AskAtOnce(Resolve({"127.0.0.1", daemon.Port()}).value(),
                        {{"guesses", {kContact, kServices}},
                         {"reads", {kContact, kNothing}},
                         {"guesses again", {kContact}},
                         {"", {kContact}},
                         {"writes with blanks", {kDescription}, ""},
                         {"guesses once more", {kDescription}, ""}},
                        patience);
    time = std::chrono::steady_clock::now() - begin;
  }
  EXPECT_GE(time, 2 * patience.wait);
  EXPECT_LT(time, 4 * patience.wait) << "one after the other, the three that guess take 6";
  ASSERT_EQ(replies.size(), 6U);
  EXPECT_EQ(replies[0].end, UdpEnd::Silent);
  EXPECT_EQ(replies[0].values.size(), 2U);
  EXPECT_EQ(replies[1].end, UdpEnd::Answered);
  EXPECT_THAT(replies[1].values, ElementsAre(Optional(std::string("Ada")), std::nullopt));
  EXPECT_EQ(replies[2].end, UdpEnd::Silent);
  EXPECT_EQ(replies[3].end, UdpEnd::Silent);
  EXPECT_EQ(replies[4].error, kNotWritable);
  EXPECT_EQ(replies[5].end, UdpEnd::Silent);
}

TEST(ATrap, ReachesAReceiver) {
  e2e::TrapReceiver receiver;
  const SnmpClient client(Resolve({"127.0.0.1", receiver.Port()}).value(), "trap community");
  EXPECT_EQ(client.SendTrap(kHeartbeat, {{kContact, "Ada"}}, std::chrono::milliseconds(1)), UdpEnd::Silent);
  EXPECT_THAT(receiver.Traps(), ElementsAre(e2e::Trap{".1.3.6.1.4.1.8072.2.3.0.1", "trap community"}));
}

TEST(ATrap, IsRefusedWhereNobodyHasThePort) {
  const SnmpClient client(Resolve({"127.0.0.1", e2e::FreePort()}).value(), "hidden");
  EXPECT_EQ(client.SendTrap(kHeartbeat, {}, std::chrono::milliseconds(30000)), UdpEnd::Refused);
}

// The library would print its complaints, and read the files of the user.
TEST(TheLibrary, PrintsNothingAndTouchesNoFiles) {
  const testsupport::ScratchFolder home;
  home.Write("snmp.conf", "blub\n");
  ::setenv("SNMPCONFPATH", home.Path().c_str(), 1);
  ::setenv("SNMP_PERSISTENT_DIR", home.Path("p").c_str(), 1);
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  const SnmpClient client(Resolve({"127.0.0.1", e2e::FreePort()}).value(), "hidden", kImpatient);
  EXPECT_NE(client.Get({kContact}).end, UdpEnd::Answered);
  SocketAddress nowhere;
  nowhere.storage.ss_family = AF_UNIX;
  EXPECT_THROW(SnmpClient(nowhere, "hidden").Get({kContact}), SnmpError);
  using Log = int (*)(int, const char*, ...);
  const auto log = reinterpret_cast<Log>(::dlsym(RTLD_DEFAULT, "snmp_log"));
  ASSERT_NE(log, nullptr);
  log(LOG_ERR, "a complaint\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
  EXPECT_FALSE(std::filesystem::exists(home.Path("p")));
  ::unsetenv("SNMPCONFPATH");
  ::unsetenv("SNMP_PERSISTENT_DIR");
}

}  // namespace
}  // namespace devhost

#include "drivers/localsnmpd/DaemonLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using drivers::LinesForLog;
using Lines = std::vector<std::string>;

// The daemon's words as the log gets them from a daemon that has failed.
std::string Logged(const std::string& words, const Lines& secrets) {
  const Lines lines = LinesForLog(words + "\n", {}, true, secrets);
  return lines.size() == 1 ? lines[0] : "not one line";
}

TEST(TheDaemonsComplaints, NameTheOwnersFileAndLine) {
  EXPECT_EQ((Lines{"/etc/x.conf:7: Warning: Unknown token: bogus.", "/proc/self/fd/0:3: Error: bad",
                   "/proc/self/fd/0:0: Error: worse", "driver.conf:1: Error: no"}),
            LinesForLog("/proc/self/fd/0: line 2: Warning: Unknown token: bogus.\n"
                        "/proc/self/fd/0: line 3: Error: bad\n"
                        "/proc/self/fd/0: line 0: Error: worse\n"
                        "driver.conf: line 1: Error: no",
                        {{"snmpd.conf", 1}, {"/etc/x.conf", 7}}, false, {}));
}

TEST(TheDaemonsComplaints, AreBoundedInNumber) {
  std::string log;
  for (int number = 1; number <= 60; ++number) {
    log += "x: line " + std::to_string(number) + ": Error: y\n";
  }
  const Lines complaints = LinesForLog(log, {}, false, {});
  ASSERT_EQ(51U, complaints.size());
  EXPECT_EQ("x:50: Error: y", complaints[49]);
  EXPECT_EQ("and 10 more complaints", complaints.back());
}

TEST(TheDaemonsOtherLines, AreTheLastOnesOfADaemonThatFailed) {
  const std::string log = "1\n2\n3\n4\n\na: line 1: Error: bad\n5\n6\n7\n";
  EXPECT_EQ((Lines{"a:1: Error: bad"}), LinesForLog(log, {}, false, {}));
  EXPECT_EQ((Lines{"a:1: Error: bad", "snmpd: 3", "snmpd: 4", "snmpd: 5", "snmpd: 6", "snmpd: 7"}),
            LinesForLog(log, {}, true, {}));
}

TEST(ALineForTheLog, IsShortAndPrintable) {
  EXPECT_EQ("snmpd: a?b", Logged("a\rb", {}));
  EXPECT_EQ("snmpd: a?b", Logged("a\x7f"
                                 "b",
                                 {}));
  EXPECT_EQ("snmpd: " + std::string(393, 'y'), Logged(std::string(393, 'y'), {}));
  EXPECT_EQ("snmpd: " + std::string(393, 'y') + "...", Logged(std::string(394, 'y'), {}));
}

TEST(ALineForTheLog, HoldsNoPieceOfASecretAtItsEnd) {
  EXPECT_EQ("snmpd: " + std::string(390, ' ') + "***...",
            Logged(std::string(390, ' ') + "secret-community", {"secret-community"}));
}

TEST(ASecret, IsMaskedWhereItIsAWord) {
  const Lines secrets = {"public", "pu"};
  EXPECT_EQ("snmpd: \"*****\" *****, publics xpublic *****-*****",
            Logged("\"public\" public, publics xpublic public-pu", secrets));
  EXPECT_EQ("snmpd: nothing", Logged("nothing", {}));
}

TEST(ASecret, HidesNeitherFileNorLineOfAComplaint) {
  const Lines secrets = {"snmpd", "Error", "162"};
  EXPECT_EQ("snmpd.conf:162: Error: ***** *****", Logged("snmpd.conf: line 162: Error: snmpd 162", secrets));
  EXPECT_EQ("snmpd.conf:162: Warning: *****", Logged("snmpd.conf: line 162: Warning: 162", secrets));
  EXPECT_EQ("snmpd: a *****: *****: *****", Logged("a 162: Error: 162", secrets));
}

TEST(TheSecretsOfADevice, AreThoseThatTheDaemonTakesForATarget) {
  const Lines secrets = drivers::CollectSecrets({}, "trap2sink    old  162\ntrap2sink  host  new  162\n");
  EXPECT_EQ("snmpd.conf:1: Error: cannot create sink: *****",
            Logged("snmpd.conf: line 1: Error: cannot create sink: old", secrets));
  EXPECT_EQ("snmpd: host *****", Logged("host new", secrets));
}

TEST(TheSecretsOfADevice, AreItsCommunitiesAndTheirWords) {
  drivers::SnmpSettings settings;
  settings.communityRead.Set("read me");
  settings.communityWrite.Set("w1");
  settings.trapTargets.Add(TrapTarget("10.0.0.5", "trap", "162"));
  const std::string config =
      "rocommunity \"old one\" default\n[snmpd] RWCOMMUNITY x2\ntrapsink host2 sink\ncom2sec sec default third\nsysName "
      "box\n";
  const Lines secrets = drivers::CollectSecrets(settings, config);
  for (const char* const secret : {"read me", "read", "me", "w1", "trap", "old one", "old", "one", "x2", "sink", "third"}) {
    EXPECT_EQ("snmpd: *****", Logged(secret, secrets)) << secret;
  }
  for (const char* const open : {"10.0.0.5", "host2", "box", "sec"}) {
    EXPECT_EQ(std::string("snmpd: ") + open, Logged(open, secrets));
  }
  EXPECT_EQ("snmpd: a ***** b", Logged("a read me b", secrets));
}

}  // namespace

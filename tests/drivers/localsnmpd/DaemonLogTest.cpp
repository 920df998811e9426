#include "drivers/localsnmpd/DaemonLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using drivers::MaskSecrets;
using drivers::Printable;
using drivers::ReadComplaints;
using drivers::ReadOtherLines;
using Lines = std::vector<std::string>;

TEST(TheDaemonsComplaints, NameTheOwnersFileAndLine) {
  EXPECT_EQ(
      (Lines{"snmpd.conf:5: Warning: Unknown token: bogus.", "extra/x.conf:12: Error: bad", "driver.conf:1: Error: no"}),
      ReadComplaints("../snmpd.conf.served: line 5: Warning: Unknown token: bogus.\n"
                     "../extra/x.conf: line 12: Error: bad\n"
                     "driver.conf: line 1: Error: no"));
}

TEST(TheDaemonsComplaints, AreNamedOnceEach) {
  EXPECT_EQ((Lines{"snmpd.conf:5: Error: bad"}),
            ReadComplaints("../snmpd.conf.served: line 5: Error: bad\nother\n../snmpd.conf.served: line 5: Error: bad\n"));
}

TEST(TheDaemonsComplaints, LeaveOutThatASinkHasItsPortInAField) {
  EXPECT_TRUE(
      ReadComplaints("../snmpd.conf.served: line 4: Warning: The separate port argument for sinks is deprecated\n").empty());
}

TEST(TheDaemonsComplaints, AreNotFoundInOtherLines) {
  const std::string log =
      "\nError opening specified endpoint \"udp:161\"\nx: line 5: Note: y\nx: line : Error: y\nx: line 5\n";
  EXPECT_TRUE(ReadComplaints(log).empty());
  EXPECT_EQ((Lines{"snmpd: Error opening specified endpoint \"udp:161\"", "snmpd: x: line 5: Note: y",
                   "snmpd: x: line : Error: y", "snmpd: x: line 5"}),
            ReadOtherLines(log));
}

TEST(TheDaemonsComplaints, AreBoundedInNumber) {
  std::string log;
  for (int number = 1; number <= 60; ++number) {
    log += "x: line " + std::to_string(number) + ": Error: y\n";
  }
  const Lines complaints = ReadComplaints(log);
  ASSERT_EQ(51U, complaints.size());
  EXPECT_EQ("and 10 more complaints", complaints.back());
}

TEST(ALineForTheLog, IsShortAndPrintable) {
  EXPECT_EQ("a?b", Printable("a\rb"));
  EXPECT_EQ("a?b", Printable("a\x7f"
                             "b"));
  EXPECT_EQ(std::string(400, 'y'), Printable(std::string(400, 'y')));
  EXPECT_EQ(std::string(400, 'y') + "...", Printable(std::string(401, 'y')));
}

TEST(TheDaemonsOtherLines, AreTheLastOnes) {
  EXPECT_EQ((Lines{"snmpd: 3", "snmpd: 4", "snmpd: 5", "snmpd: 6", "snmpd: 7"}), ReadOtherLines("1\n2\n3\n4\n\n5\n6\n7\n"));
}

TEST(ASecret, IsMaskedWhereItIsAWord) {
  const Lines secrets = {"public", "pu"};
  EXPECT_EQ("\"*****\" *****, publics xpublic *****-*****",
            MaskSecrets("\"public\" public, publics xpublic public-pu", secrets));
  EXPECT_EQ("nothing", MaskSecrets("nothing", {}));
}

TEST(ASecret, HidesNeitherFileNorLineOfAComplaint) {
  const Lines secrets = {"snmpd", "162"};
  EXPECT_EQ("snmpd.conf:162: Error: ***** *****", MaskSecrets("snmpd.conf:162: Error: snmpd 162", secrets));
  EXPECT_EQ("snmpd.conf:162: Warning: *****", MaskSecrets("snmpd.conf:162: Warning: 162", secrets));
  EXPECT_EQ("a *****: Error: *****", MaskSecrets("a 162: Error: 162", secrets));
}

TEST(TheSecretsOfADevice, AreThoseThatTheDaemonTakesForATarget) {
  const Lines secrets = drivers::CollectSecrets({}, "trap2sink    old  162\ntrap2sink  host  new  162\n");
  EXPECT_EQ("snmpd.conf:1: Error: cannot create sink: *****",
            MaskSecrets("snmpd.conf:1: Error: cannot create sink: old", secrets));
  EXPECT_EQ("host *****", MaskSecrets("host new", secrets));
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
    EXPECT_EQ("*****", MaskSecrets(secret, secrets)) << secret;
  }
  for (const char* const open : {"10.0.0.5", "host2", "box", "sec"}) {
    EXPECT_EQ(open, MaskSecrets(open, secrets));
  }
  EXPECT_EQ("a ***** b", MaskSecrets("a read me b", secrets));
}

}  // namespace

#include "drivers/localsnmpd/DaemonLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using drivers::LinesForLog;
using Lines = std::vector<std::string>;

TEST(TheDaemonsComplaints, NameTheOwnersFileAndLine) {
  EXPECT_EQ((Lines{"/etc/x.conf:7: Warning: incomplete line", "another file:3: Error: Bad TYPE",
                   "another file:0: Error: illegal oid", "driver.conf:1: Error: illegal oid"}),
            LinesForLog("/proc/self/fd/0: line 2: Warning: incomplete line\n"
                        "/proc/self/fd/0: line 3: Error: Bad TYPE\n"
                        "/proc/self/fd/0: line 0: Error: illegal oid\n"
                        "driver.conf: line 1: Error: illegal oid",
                        {{"snmpd.conf", 1}, {"/etc/x.conf", 7}}, false));
}

TEST(TheDaemonsComplaints, AreBoundedInNumber) {
  std::string log;
  for (int number = 1; number <= 60; ++number) {
    log += "driver.conf: line " + std::to_string(number) + ": Error: illegal oid\n";
  }
  const Lines complaints = LinesForLog(log, {}, false);
  ASSERT_EQ(51U, complaints.size());
  EXPECT_EQ("driver.conf:50: Error: illegal oid", complaints[49]);
  EXPECT_EQ("and 10 more complaints", complaints.back());
}

TEST(TheDaemonsComplaints, ShowNothingOfWhatTheyQuote) {
  EXPECT_EQ((Lines{"snmpd.conf:1: Error: cannot create sink: *****", "another file:2: Warning: Unknown token: *****",
                   "another file:3: Error: *****"}),
            LinesForLog("/proc/self/fd/0: line 1: Error: cannot create sink: hidden\n"
                        "../hidden.conf: line 2: Warning: Unknown token: hidden.\n"
                        "Failed to register extend entry 'hidden: line 3: Error: hidden\n",
                        {{"snmpd.conf", 1}}, false));
}

TEST(TheDaemonsOtherLines, AreTheLastOnesOfADaemonThatFailed) {
  std::string log = "driver.conf: line 1: Error: illegal oid\n";
  for (int code = 1; code <= 7; ++code) {
    log += "hidden\n" + std::string(code < 4 ? "Address already in use\n" : "Name or service not known\n");
  }
  EXPECT_EQ((Lines{"driver.conf:1: Error: illegal oid"}), LinesForLog(log, {}, false));
  EXPECT_EQ(
      (Lines{"driver.conf:1: Error: illegal oid", "snmpd: Address already in use", "snmpd: Name or service not known",
             "snmpd: Name or service not known", "snmpd: Name or service not known", "snmpd: Name or service not known"}),
      LinesForLog(log, {}, true));
}

TEST(TheDaemonsOtherLines, ShowNothingThatTheyQuote) {
  EXPECT_EQ((Lines{"snmpd: Error opening specified endpoint *****"}),
            LinesForLog("Error opening specified endpoint \"udp:hidden\"\ntime string hidden\n", {}, true));
}

}  // namespace

// What of a file the daemon's parser gets.
#include "devhost/check/DaemonText.h"

#include <gtest/gtest.h>

#include "devhost/check/Rules.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

DaemonText Made(const std::string& text, const std::string& path = "") {
  Report report("snmpd.conf", false);
  Circumstances circumstances;
  circumstances.path = path;
  DaemonText made;
  JudgeText(text, report, circumstances, &made);
  return made;
}

TEST(TheTextForTheDaemon, HoldsTheDirectivesThatTheDaemonOnlyRemembers) {
  EXPECT_EQ(Made("rocommunity  reader \r\n# comment\nsysName box # here").Text(),
            "rocommunity reader \r\n\nsysname box # here\n");
}

TEST(TheTextForTheDaemon, HasAnEmptyLineForEachOther) {
  EXPECT_EQ(Made("perl x\n[snmp]\nlogOption f x\nrocommunity a\n[snmpd]\nagentaddress x\nload 1\nlogOption f x").Text(),
            "\n\n\n\n\n\nload 1\n\n");
  EXPECT_EQ(Made("[snmp] logOption f x\n[snmpd] load 1\n\"perl\" x\n\xEF\xBB\xBFload 1\n").Text(), "\nload 1\n\n\n");
}

TEST(TheTextForTheDaemon, EndsALineWhereTheDaemonEndsIt) {
  EXPECT_EQ(Made(std::string("load 1\0perl x\nload 2", 20)).Text(), "load 1\nload 2\n");
}

TEST(TheTextForTheDaemon, LeavesOutWhatANameServerWouldBeAskedAbout) {
  EXPECT_EQ(Made("rocommunity a host.example\ncom2sec s host.example/8 c\nrocommunity a 10.0.0.1\nauthcommunity read c host")
                .Text(),
            "\n\nrocommunity a 10.0.0.1\n\n");
}

TEST(TheTextForTheDaemon, HoldsIncludedFilesAndKnowsTheirLines) {
  const testsupport::ScratchFolder folder;
  folder.Write("more.conf", "load 2\nperl x\nincludeFile again.conf\n");
  folder.Write("again.conf", "load 3\n");
  const DaemonText made = Made("load 1\nincludeFile more.conf\nload 4\n", folder.Path("snmpd.conf"));
  EXPECT_EQ(made.Text(), "load 1\n\nload 2\n\n\nload 3\nload 4\n");
  EXPECT_EQ(made.NumberOf(1), 1U);
  EXPECT_EQ(made.NumberOf(7), 3U);
  EXPECT_GT(made.NumberOf(3), 3U);
  EXPECT_EQ(made.NumberOf(0), 0U);
  EXPECT_EQ(made.NumberOf(8), 0U);
}

}  // namespace
}  // namespace devhost

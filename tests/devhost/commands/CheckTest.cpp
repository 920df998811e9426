#include <gmock/gmock.h>
#include <stdlib.h>

#include <string>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;

using CheckCommand = CommandsFixture;

constexpr char kMisread[] = "rocommunity  it's-secret\n";

TEST_F(CheckCommand, SaysThatACleanFileHasNoFindings) {
  const std::string file = File("snmpd.conf", "rocommunity  reader\n");
  const Outcome outcome = Run({"check", file});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out, file + ": no findings\n");
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(CheckCommand, PrintsFindingsAndCountsThem) {
  const std::string file = File("snmpd.conf", kMisread);
  const Outcome outcome = Run({"check", file});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_EQ(outcome.out, file +
                             ":1: error: a quote or a backslash in the community: the daemon answers to ***** instead of "
                             "***** [community-misread]\n    choose a community without \", ' and \\\n" +
                             file + ": 1 error, 0 warnings\n");
}

TEST_F(CheckCommand, ShowsCommunitiesWhenAsked) {
  EXPECT_THAT(Run({"check", "--show-secrets", File("snmpd.conf", kMisread)}).out, HasSubstr("instead of \"it's-secret\""));
}

TEST_F(CheckCommand, WritesJsonLinesAndNothingElse) {
  const std::string file = File("snmpd.conf", kMisread);
  EXPECT_EQ(
      Run({"check", "--json", file}).out,
      "{\"file\":\"" + file +
          "\",\"line\":1,\"severity\":\"error\",\"rule\":\"community-misread\",\"reason\":\"a quote or a backslash in "
          "the community: the daemon answers to ***** instead of *****\",\"remedy\":\"choose a community without \\\", ' "
          "and \\\\\"}\n");
  EXPECT_EQ(Run({"check", "--json", File("snmpd.conf", "rocommunity  reader\n")}).out, "");
}

// A file as the agent writes it is clean, though a device that has lost its settings would misread it.
TEST_F(CheckCommand, PrintsNotesLastAndDoesNotCountThemAsFindings) {
  const std::string section =
      "# Halvoren Section Start\nrocommunity  reader\ntrap2sink  192.0.2.5  trapper  162\n# Halvoren Section End\n\n";
  const std::string file = File("snmpd.conf", section);
  const Outcome clean = Run({"check", file});
  EXPECT_EQ(clean.status, ExitStatus::Good);
  EXPECT_THAT(clean.out, HasSubstr(file + ":3: note: "));
  EXPECT_THAT(clean.out, HasSubstr(file + ": no findings, 1 note\n"));
  EXPECT_THAT(Run({"check", "--json", file}).out,
              HasSubstr("\"line\":3,\"severity\":\"note\",\"rule\":\"trap-read-as-community\""));

  const Outcome found = Run({"check", File("snmpd.conf", section + kMisread)});
  EXPECT_EQ(found.status, ExitStatus::Failed);
  EXPECT_LT(found.out.find(file + ":6: error: "), found.out.find(file + ":3: note: ")) << found.out;
  EXPECT_THAT(found.out, HasSubstr(file + ": 1 error, 0 warnings, 1 note\n"));
}

TEST_F(CheckCommand, SaysWhoHasWrittenWhichLines) {
  const std::string part = File("part.conf", "sysName hidden1\n\n");
  const std::string file = File("snmpd.conf",
                                "# mine\n# Halvoren Section Start\nrocommunity  hidden2\n# Halvoren Section End\n\n"
                                "rocommunity  hidden3\nincludeFile part.conf\nview x included .1\n");
  const Outcome outcome = Run({"check", "--owners", file});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out, file + ":1-1: by hand, above the section (the agent drops this text)\n" + file +
                             ":2-5: the section of the agent, which each write makes anew\n" + file +
                             ":6-7: by hand, below the section (kept)\n" + part + ":1-2: by hand, included by line 7\n" +
                             file + ":8-8: by hand, below the section (kept)\n");
  const std::string bare = File("bare.conf", "includeFile part.conf\n");
  EXPECT_EQ(Run({"check", "--owners", "--json", bare}).out,
            "{\"file\":\"" + bare + "\",\"owners\":[{\"file\":\"" + bare +
                "\",\"first\":1,\"last\":1,\"owner\":\"kept\"},{\"file\":\"" + part +
                "\",\"first\":1,\"last\":2,\"owner\":\"included\",\"includedBy\":\"line 1\"}]}\n");
  EXPECT_THAT(Run({"check", "--owners", bare}).out,
              testing::StartsWith(bare + ":1-1: by hand (kept below the section that will come)\n"));
}

TEST_F(CheckCommand, SaysWhenTheDaemonWouldTellMore) {
  const std::string text = "rocommunity  reader\nload  1\nextend  one  /bin/true\nsh  two  true\n";
  const std::string file = File("snmpd.conf", text);
  const std::string hint = file + ": 1 directive judged by name only; --daemon lets the installed snmpd judge more\n";
  EXPECT_EQ(Run({"check", file}).out, file + ": no findings\n" + hint);
  EXPECT_EQ(Run({"check", file}).status, ExitStatus::Good);
  EXPECT_EQ(Run({"check", file, "--daemon"}).out,
            file + ": no findings\n" + file +
                ": 2 directives judged by name only; the daemon was not given what would open ports, run programs or name "
                "files\n");
  EXPECT_EQ(Run({"check", file, "--json"}).out, "");
}

TEST_F(CheckCommand, SaysWhoIsLetInAlthoughSnmpIsOff) {
  const std::string file = File("snmpd.conf", "rocommunity  reader\n");
  EXPECT_EQ(Run({"check", file}).status, ExitStatus::Good);
  EXPECT_THAT(Run({"check", "--off", file}).out, HasSubstr("[still-lets-in]"));
  EXPECT_EQ(Run({"check", "--off", File("empty.conf", "# nobody\n")}).status, ExitStatus::Good);
}

TEST_F(CheckCommand, GoesOnAfterAFileThatItCannotRead) {
  const std::string file = File("snmpd.conf", kMisread);
  const Outcome outcome = Run({"check", folder.Path("missing"), folder.Path(), file});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, HasSubstr("devhost: cannot read \"" + folder.Path("missing") + "\": No such file"));
  EXPECT_THAT(outcome.errors, HasSubstr("Is a directory"));
  EXPECT_THAT(outcome.out, HasSubstr(file + ":1: error"));
}

TEST_F(CheckCommand, ReadsStandardInput) {
  const Outcome outcome = RunOn(kMisread, {"check", "-", "--daemon"});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, HasSubstr("standard input:1: error: "));
}

TEST_F(CheckCommand, PrintsWhatTheDaemonSays) {
  const std::string file = File("snmpd.conf", "rocommunity  reader\nsysObjectID  bogus\n# a comment\nrouser\n");
  const Outcome outcome = Run({"check", "--daemon", file});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out,
              HasSubstr(file + ":2: error: the daemon says: Error: sysobjectid token not a parsable OID: [daemon]\n"));
  EXPECT_THAT(outcome.out, HasSubstr(file + ":4: error: the daemon says: Error: Blank line following ***** [daemon]\n"));
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(CheckCommand, EndsWithTwoWhenTheDaemonCannotBeAsked) {
  const std::string file = File("snmpd.conf", kMisread);
  ::chmod(File("snmpd", "#!/bin/sh\nkill -9 $$\n").c_str(), 0700);
  const std::string before = ::getenv("PATH");
  ::setenv("PATH", folder.Path().c_str(), 1);
  const Outcome outcome = Run({"check", "--daemon", file});
  ::setenv("PATH", before.c_str(), 1);
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, testing::MatchesRegex("devhost: [^\n]*snmpd was killed when it read [^\n]*\n"));
  EXPECT_THAT(outcome.out, HasSubstr(file + ":1: error: "));
}

}  // namespace
}  // namespace devhost

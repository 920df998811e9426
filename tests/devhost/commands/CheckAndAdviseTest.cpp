// devhost check and devhost advise, as their options come from the command line.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "devhost/commands/CheckCommand.h"
#include "devhost/system/Output.h"
#include "tests/devhost/check/Examples.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using testsupport::ScratchFolder;

// What a command printed.
struct Outcome {
  int status = -1;
  std::string out;
  std::string errors;
};

class Commands : public testing::Test {
 protected:
  template <typename Options>
  Outcome Run(int (*command)(const Options&, Output&, Output&), const Options& options) {
    Outcome outcome;
    {
      const int out = ::open(folder.Path("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
      const int errors = ::open(folder.Path("errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
      Output output(out);
      Output complaints(errors);
      outcome.status = command(options, output, complaints);
      ::close(out);
      ::close(errors);
    }
    outcome.out = folder.Read("out");
    outcome.errors = folder.Read("errors");
    return outcome;
  }

  // A file that only its owner may read.
  std::string File(const std::string& name, const std::string& text) {
    const std::string path = folder.Write(name, text);
    ::chmod(path.c_str(), 0600);
    return path;
  }

  Outcome Check(const std::vector<std::string>& files, bool json = false, bool daemon = false, bool showSecrets = false) {
    CheckOptions options;
    options.files = files;
    options.json = json;
    options.daemon = daemon;
    options.showSecrets = showSecrets;
    return Run(&RunCheck, options);
  }

  Outcome Advise(const std::string& settings, bool json = false, bool showSecrets = false) {
    AdviseOptions options;
    options.settings = settings;
    options.json = json;
    options.showSecrets = showSecrets;
    return Run(&RunAdvise, options);
  }
  Outcome AdviseOn(const std::string& xml, bool json = false, bool showSecrets = false) {
    return Advise(File("settings.xml", xml), json, showSecrets);
  }

  const ScratchFolder folder;
};

using CheckCommand = Commands;
using AdviseCommand = Commands;

constexpr char kMisread[] = "rocommunity  it's-secret\n";

TEST_F(CheckCommand, SaysThatACleanFileHasNoFindings) {
  const std::string file = File("snmpd.conf", "rocommunity  reader\n");
  const Outcome outcome = Check({file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, file + ": no findings\n");
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(CheckCommand, TellsFindingsAndCountsThem) {
  const std::string file = File("snmpd.conf", kMisread);
  const Outcome outcome = Check({file});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, file +
                             ":1: error: a quote or a backslash in the community: the daemon answers to ***** instead of "
                             "***** [community-misread]\n    take a community without \", ' and \\\n" +
                             file + ": 1 error, 0 warnings\n");
}

TEST_F(CheckCommand, ShowsCommunitiesWhenAsked) {
  EXPECT_THAT(Check({File("snmpd.conf", kMisread)}, false, false, true).out, HasSubstr("instead of \"it's-secret\""));
}

TEST_F(CheckCommand, WritesJsonLinesAndNothingElse) {
  const std::string file = File("snmpd.conf", kMisread);
  EXPECT_EQ(
      Check({file}, true).out,
      "{\"file\":\"" + file +
          "\",\"line\":1,\"severity\":\"error\",\"rule\":\"community-misread\",\"reason\":\"a quote or a backslash in "
          "the community: the daemon answers to ***** instead of *****\",\"remedy\":\"take a community without \\\", ' "
          "and \\\\\"}\n");
  EXPECT_EQ(Check({File("snmpd.conf", "rocommunity  reader\n")}, true).out, "");
}

TEST_F(CheckCommand, FindsAFileThatOthersMayRead) {
  const std::string file = File("snmpd.conf", "rocommunity  reader\n");
  ::chmod(file.c_str(), 0644);
  const Outcome outcome = Check({file});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr(file + ": warning: the file's mode is 0644: others than its owner and group may read"));
  EXPECT_THAT(outcome.out, HasSubstr("[file-mode]"));
}

// A file as the agent writes it is clean, though a device that has lost its settings would misread it.
TEST_F(CheckCommand, TellsNotesLastAndDoesNotCountThemAsFindings) {
  const std::string section =
      "# Halvoren Section Start\nrocommunity  reader\ntrap2sink  192.0.2.5  trapper  162\n# Halvoren Section End\n\n";
  const std::string file = File("snmpd.conf", section);
  const Outcome clean = Check({file});
  EXPECT_EQ(clean.status, 0);
  EXPECT_THAT(clean.out, HasSubstr(file + ":3: note: "));
  EXPECT_THAT(clean.out, HasSubstr(file + ": no findings, 1 note\n"));
  EXPECT_THAT(Check({file}, true).out, HasSubstr("\"line\":3,\"severity\":\"note\",\"rule\":\"trap-read-as-community\""));

  const Outcome found = Check({File("snmpd.conf", section + kMisread)});
  EXPECT_EQ(found.status, 1);
  EXPECT_LT(found.out.find(file + ":6: error: "), found.out.find(file + ":3: note: ")) << found.out;
  EXPECT_THAT(found.out, HasSubstr(file + ": 1 error, 0 warnings, 1 note\n"));
}

TEST_F(CheckCommand, GoesOnAfterAFileThatItCannotRead) {
  const std::string file = File("snmpd.conf", kMisread);
  const Outcome outcome = Check({folder.Path("missing"), folder.Path(), file});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.errors, HasSubstr("devhost: cannot read \"" + folder.Path("missing") + "\": No such file"));
  EXPECT_THAT(outcome.errors, HasSubstr("Is a directory"));
  EXPECT_THAT(outcome.out, HasSubstr(file + ":1: error"));
}

TEST_F(CheckCommand, ChangesNoByte) {
  const std::string text = Example("marker-in-text") + std::string("\0\xFF\r", 3);
  const std::string file = File("snmpd.conf", text);
  const auto time = std::filesystem::last_write_time(file);
  Check({file}, false, true);
  EXPECT_EQ(ScratchFolder::ReadFile(file), text);
  EXPECT_EQ(std::filesystem::last_write_time(file), time);
}

TEST_F(CheckCommand, ReadsStandardInput) {
  const int input = ::dup(STDIN_FILENO);
  const int file = ::open(File("piped", kMisread).c_str(), O_RDONLY | O_CLOEXEC);
  ::dup2(file, STDIN_FILENO);
  const Outcome outcome = Check({"-"}, false, true);
  ::dup2(input, STDIN_FILENO);
  ::close(input);
  ::close(file);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("standard input:1: error: "));
}

TEST_F(CheckCommand, TellsWhatTheDaemonSays) {
  const std::string file = File("snmpd.conf", "rocommunity  reader\nsysObjectID  bogus\n# a comment\nrouser\n");
  const Outcome outcome = Check({file}, false, true);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out,
              HasSubstr(file + ":2: error: the daemon says: Error: sysobjectid token not a parsable OID: [daemon]\n"));
  EXPECT_THAT(outcome.out,
              HasSubstr(file + ":4: error: the daemon says: Error: Blank line following rouser token. [daemon]\n"));
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(CheckCommand, TellsTheDaemonsWordsOnce) {
  const std::string out = Check({File("snmpd.conf", "rocommunity  reader\nrouser\n")}, false, true).out;
  EXPECT_EQ(out.find("Blank line"), out.rfind("Blank line")) << out;
}

TEST_F(CheckCommand, DoesNotTellOfPortsThatTheDaemonCallsDeprecated) {
  const Outcome outcome =
      Check({File("snmpd.conf", "rocommunity  reader\ntrap2sink  127.0.0.1  trapper  162\n")}, false, true);
  EXPECT_EQ(outcome.status, 0) << outcome.out;
}

TEST_F(CheckCommand, AsksTheDaemonAboutAFileWithACommaInItsName) {
  const std::string file = File("a,b.conf", "rocommunity  reader\nrouser\n");
  EXPECT_THAT(Check({file}, false, true).out, HasSubstr(file + ":2: error: the daemon says: "));
}

TEST_F(CheckCommand, MasksCommunitiesInTheDaemonsWords) {
  // The daemon repeats the host, which is where the community comes to stand when the host is missing.
  const std::string file = File("snmpd.conf", "rocommunity  reader\ntrap2sink    127.0.0.1:s3cret  162\n");
  EXPECT_THAT(Check({file}, false, true).out, HasSubstr("the daemon says: Error: cannot create sink: ***** [daemon]"));
  EXPECT_THAT(Check({file}, false, true, true).out, HasSubstr("cannot create sink: 127.0.0.1:s3cret [daemon]"));
}

TEST_F(CheckCommand, LeavesNoTemporaryFolderBehind) {
  const std::string temporary = folder.Path("tmp");
  std::filesystem::create_directory(temporary);
  const char* const before = ::getenv("TMPDIR");
  const std::string old = before == nullptr ? "" : before;
  ::setenv("TMPDIR", temporary.c_str(), 1);
  Check({File("snmpd.conf", kMisread)}, false, true);
  const bool empty = std::filesystem::is_empty(temporary);
  before == nullptr ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", old.c_str(), 1);
  EXPECT_TRUE(empty);
}

TEST_F(AdviseCommand, SaysThatSaneSettingsHaveNoFindings) {
  const Outcome outcome = AdviseOn(
      "<managedDevice><snmpCommunityReadSetting>reader</snmpCommunityReadSetting>"
      "<snmpSysContactSetting>Ada, ground floor</snmpSysContactSetting></managedDevice>");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, folder.Path("settings.xml") + ": no findings\n");
}

TEST_F(AdviseCommand, LeavesOutWhatConcernsOnlyADeviceThatHasLostItsSettings) {
  const Outcome outcome = AdviseOn(
      "<managedDevice><snmpCommunityReadSetting>two words</snmpCommunityReadSetting>"
      "<snmpSysNameSetting>box sysName</snmpSysNameSetting><snmpTrapTargets>"
      "<trapTarget><target>192.0.2.5</target><community>trapper</community><port>162</port></trapTarget>"
      "</snmpTrapTargets></managedDevice>");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, folder.Path("settings.xml") + ": no findings\n");
}

TEST_F(AdviseCommand, TellsTheElementAndItsLine) {
  const Outcome outcome = AdviseOn(
      "<managedDevice>\n  <snmpSysContactSetting>#1</snmpSysContactSetting>\n"
      "  <snmpCommunityReadSetting>it's</snmpCommunityReadSetting>\n</managedDevice>\n");
  const std::string file = folder.Path("settings.xml");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out,
              HasSubstr(file + ":2: error: snmpSysContactSetting: the daemon takes a value that begins with #"));
  EXPECT_THAT(outcome.out, HasSubstr(file + ":3: error: snmpCommunityReadSetting: a quote or a backslash in the community: "
                                            "the daemon answers to ***** instead of *****"));
  EXPECT_THAT(outcome.out, HasSubstr(file + ": 2 errors, 0 warnings\n"));
}

TEST_F(AdviseCommand, NamesOtherSettingsByTheirElements) {
  const Outcome outcome = AdviseOn(
      "<managedDevice>\n<snmpCommunityWriteSetting>both</snmpCommunityWriteSetting>\n"
      "<snmpCommunityReadSetting>both</snmpCommunityReadSetting>\n</managedDevice>\n");
  EXPECT_THAT(outcome.out, HasSubstr(":2: error: snmpCommunityWriteSetting: the write community is the read community of "
                                     "snmpCommunityReadSetting in line 3 again"));
}

TEST_F(AdviseCommand, FindsALineFeedAndWhatItMakes) {
  const Outcome outcome = AdviseOn(
      "<managedDevice><snmpCommunityReadSetting>reader</snmpCommunityReadSetting>\n"
      "<snmpSysContactSetting>Ada\nextend evil /bin/true</snmpSysContactSetting></managedDevice>");
  EXPECT_THAT(outcome.out, HasSubstr(":2: error: snmpSysContactSetting: a line feed"));
  EXPECT_THAT(outcome.out, HasSubstr("[line-feed]"));
  EXPECT_THAT(outcome.out, HasSubstr("[foreign-line-in-section]"));
}

TEST_F(AdviseCommand, JudgesEachTrapTargetAtItsLine) {
  const Outcome outcome = AdviseOn(
      "<managedDevice><snmpCommunityReadSetting>reader</snmpCommunityReadSetting><snmpTrapTargets>\n"
      "<trapTarget><target>192.0.2.5</target><community/><port>162</port></trapTarget>\n"
      "<trapTarget><target/><community>trapper</community><port/></trapTarget>\n"
      "<trapTarget><target>::1</target><community>trapper</community><port>162</port></trapTarget>\n"
      "</snmpTrapTargets></managedDevice>");
  EXPECT_THAT(outcome.out, HasSubstr(":2: error: snmpTrapTargets: a trap target with a port and no community"));
  EXPECT_THAT(outcome.out, HasSubstr(":3: error: snmpTrapTargets: a trap target without a host"));
  EXPECT_THAT(outcome.out, HasSubstr(":4: error: snmpTrapTargets: the daemon appends the port"));
}

TEST_F(AdviseCommand, SaysWhenNobodyIsLetIn) {
  const Outcome outcome = AdviseOn("\n<managedDevice><snmpSysNameSetting>box</snmpSysNameSetting></managedDevice>", true);
  EXPECT_THAT(outcome.out, HasSubstr("\"line\":2,\"severity\":\"warning\",\"rule\":\"no-access\""));
}

TEST_F(AdviseCommand, RefusesWhatIsNoXml) {
  const Outcome outcome = AdviseOn("<managedDevice>\n<snmpSysNameSetting>\n</managedDevice>");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.errors, HasSubstr("devhost: " + folder.Path("settings.xml") + ":3:"));
  EXPECT_THAT(outcome.errors, HasSubstr("the settings are no well-formed XML: "));
}

TEST_F(AdviseCommand, RefusesAFileThatIsMissing) {
  const Outcome outcome = Advise(folder.Path("missing"));
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.errors, HasSubstr("devhost: cannot read "));
}

TEST_F(AdviseCommand, ShowsNoCommunityUnlessAsked) {
  const std::string xml =
      "<managedDevice><snmpCommunityReadSetting>s3'cret</snmpCommunityReadSetting>"
      "<snmpCommunityWriteSetting>\"s3cret\"</snmpCommunityWriteSetting></managedDevice>";
  EXPECT_THAT(AdviseOn(xml).out, Not(HasSubstr("s3")));
  EXPECT_THAT(AdviseOn(xml, false, true).out, HasSubstr("s3'cret"));
}

}  // namespace
}  // namespace devhost

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

TEST_F(AdviseCommand, SaysThatSaneSettingsHaveNoFindings) {
  const Outcome outcome = AdviseOn(
      "<managedDevice><snmpCommunityReadSetting>reader</snmpCommunityReadSetting>"
      "<snmpSysContactSetting>Ada, ground floor</snmpSysContactSetting></managedDevice>");
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

}  // namespace
}  // namespace devhost

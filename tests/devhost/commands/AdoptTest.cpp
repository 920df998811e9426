#include <gmock/gmock.h>

#include <filesystem>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class AdoptCommand : public CommandsFixture {
 protected:
  Outcome Adopt(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> words = {"adopt", "--module-dir", MODULE_FOLDER, file};
    words.insert(words.end(), options.begin(), options.end());
    return Run(words);
  }

  const std::string file = File("etc/snmpd.conf", "# mine\nrocommunity hidden\nsysServices 76\nagentaddress 127.0.0.1\n");
};

TEST_F(AdoptCommand, SaysInPlainWordsWhatBecomesOfEachLine) {
  const Outcome outcome = Adopt();
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_THAT(
      outcome.out,
      AllOf(StartsWith("goes into the section of the agent:\n  line 2: rocommunity becomes snmpCommunityReadSetting\n"
                       "stays below the section:\n  agentaddress: line 4\n  sysservices: line 3\n"
                       "comes with the section:\n  master agentx\n"),
            HasSubstr("wins over the section or loses to it, as \"devhost drift\" will say:\n" + file + ", managed:"),
            Not(HasSubstr("hidden"))));
  EXPECT_THAT(Adopt({"--diff"}).out, HasSubstr("\n-rocommunity *****\n"));
  EXPECT_EQ(folder.Read("etc/snmpd.conf"), "# mine\nrocommunity hidden\nsysServices 76\nagentaddress 127.0.0.1\n");
}

TEST_F(AdoptCommand, WritesSettingsAndAPatchForThisUserAlone) {
  const std::string made = folder.Path("adopted");
  EXPECT_THAT(Adopt({"--write", made}).out,
              HasSubstr("next:\n  patch " + file + " " + made + "/snmpd.conf.patch\n  devhost apply --file " + file + " " +
                        made + "/settings.xml --restart-command 'systemctl restart snmpd'\n"));
  EXPECT_EQ(fs::status(made).permissions(), fs::perms::owner_all);
  for (const char* const name : {"settings.xml", "snmpd.conf.patch"}) {
    EXPECT_EQ(fs::status(made + "/" + name).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_THAT(folder.Read("adopted/" + std::string(name)), HasSubstr("hidden"));
  }
  const Outcome again = Adopt({"--write", made});
  EXPECT_EQ(again.status, ExitStatus::Wrong);
  EXPECT_THAT(again.errors, HasSubstr("it is there already"));
}

TEST_F(AdoptCommand, PrintsOneJsonObject) {
  EXPECT_THAT(Adopt({"--json"}).out,
              AllOf(StartsWith("{\"file\":\"" + file + "\",\"becoming\":[\"line 2: rocommunity becomes "),
                    HasSubstr("\"rule\":\"overrides-section\""), HasSubstr("\\n-rocommunity *****\\n"),
                    testing::EndsWith(",\"written\":null}\n")));
  fs::remove(file);
  const Outcome missing = Adopt({"--json"});
  EXPECT_EQ(missing.status, ExitStatus::Wrong);
  EXPECT_THAT(missing.out,
              AllOf(StartsWith("{\"file\":\"" + file + "\",\"verdict\":\"stopped\",\"stage\":\"input\",\"reason\":"),
                    HasSubstr("cannot read")));
}

TEST_F(AdoptCommand, QuotesPathsForAShell) {
  const std::string made = folder.Path("it's new");
  EXPECT_THAT(Adopt({"--write", made}).out,
              AllOf(HasSubstr("\n  patch " + file + " '" + folder.Path("it'\\''s new/snmpd.conf.patch") + "'\n"),
                    HasSubstr(" '" + folder.Path("it'\\''s new/settings.xml") + "' --restart-command ")));
}

TEST_F(AdoptCommand, TakesACopyOfAnyName) {
  const std::string copy = File("fetched.conf", "sysContact Ada\n");
  const std::string made = folder.Path("adopted");
  const Outcome outcome = Run({"adopt", "--module-dir", MODULE_FOLDER, copy, "--write", made});
  EXPECT_EQ(outcome.status, ExitStatus::Good) << outcome.errors;
  EXPECT_THAT(outcome.out, HasSubstr("next:\n  patch " + copy + " " + made +
                                     "/snmpd.conf.patch\n  put the file back as snmpd.conf, and "
                                     "give it " +
                                     made + "/settings.xml with devhost apply\n"));
}

TEST_F(AdoptCommand, RefusesWhatApplyWouldRefuse) {
  fs::rename(file, folder.Path("etc/real.conf"));
  fs::create_symlink("real.conf", file);
  const Outcome linked = Adopt({"--write", folder.Path("adopted")});
  EXPECT_EQ(linked.status, ExitStatus::Wrong);
  EXPECT_THAT(linked.errors, HasSubstr("it is a symbolic link"));
  EXPECT_FALSE(fs::exists(folder.Path("adopted")));
}

TEST_F(AdoptCommand, RefusesAFileWithASection) {
  File("etc/snmpd.conf", "# Halvoren Section Start\n# Halvoren Section End\n");
  const Outcome outcome = Adopt();
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, HasSubstr("the file has markers of the agent's section"));
}

}  // namespace
}  // namespace devhost

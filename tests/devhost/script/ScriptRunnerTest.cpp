// What goldens do not show: the values that a script's player reports, and the order of things. Sessions are in
// tests/scripts.
#include "devhost/script/ScriptRunner.h"

#include <gmock/gmock.h>

#include "devhost/state/StateStore.h"
#include "tests/devhost/support/RecordingReporter.h"
#include "tests/devhost/support/TestModules.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using Kind = ScriptOccurrence::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class APlayedScript : public testing::Test {
 protected:
  // Plays it to one simulated device.
  ScriptRunner::Result Play(const std::string& text) {
    const DriverNames names(project.drivers);
    const Script script{"a.devhost", folder.Path(), text};
    CheckScript(script, names);
    ScriptRunner runner(project, names, states, reporter, secrets);
    runner.Start();
    if (beforePlay) {
      beforePlay();
    }
    runner.Play(script);
    runner.Stop();
    return runner.GetResult();
  }

  // The only one of a kind.
  ScriptOccurrence Only(Kind kind) const {
    const std::vector<ScriptOccurrence> some = reporter.Of(kind);
    EXPECT_EQ(some.size(), 1u);
    return some.empty() ? ScriptOccurrence{kind} : some.front();
  }

  std::string AllTexts() const {
    std::string all;
    for (const ScriptOccurrence& each : reporter.script) {
      all += each.text + "\n" + TextOf("", each.parameters) + TextOf("", each.written) + "\n";
      for (const std::string& detail : each.details) {
        all += detail + "\n";
      }
    }
    for (const Occurrence& each : reporter.host) {
      all += TextOf(each) + "\n";
    }
    return all;
  }

  const testsupport::ScratchFolder folder;
  Project project{{{12, "kitchen", MODULE_FOLDER "/simulated_device.so", "<config folder=\"" + folder.Path("k") + "\"/>"}},
                  {{5, 7, "lamp", false, false, true}}};
  StateMemory states;
  RecordingReporter reporter;
  Masker secrets{false};
  std::function<void()> beforePlay;
};

TEST_F(APlayedScript, CanBePlayedLineByLine) {
  const DriverNames names(project.drivers);
  ScriptRunner runner(project, names, states, reporter, secrets);
  runner.Start();
  const auto play = [&runner](const std::string& text, std::size_t number) {
    return runner.PlayLine({"standard input", ".", text}, number);
  };
  EXPECT_TRUE(play("print a", 1));
  EXPECT_TRUE(play("", 2));
  EXPECT_FALSE(play("nonsense", 3));
  EXPECT_FALSE(play("expect log is x", 4));
  EXPECT_TRUE(play("print b", 5));
  EXPECT_FALSE(runner.HasGivenUp());
  runner.Stop();
  std::vector<bool> good;
  for (const ScriptOccurrence& done : reporter.Of(Kind::Done)) {
    good.push_back(done.good);
  }
  EXPECT_THAT(good, ElementsAre(true, true, false, false, true));
  EXPECT_THAT(reporter.lines, ElementsAre(1U, 1U, 2U, 3U, 3U, 4U, 4U, 5U, 5U));
  EXPECT_THAT(Only(Kind::Error).text, HasSubstr("unknown action"));
}

TEST_F(APlayedScript, ReportsACommandWithItsParametersAndAsItIsWritten) {
  folder.Write("name", "kitchen north");
  Play("command to kitchen SetSetting name=sysName value=@name\ncommand SetSetting name=sysName value=@@home\n");
  const std::vector<ScriptOccurrence> commands = reporter.Of(Kind::Command);
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].driverId, 12ul);
  EXPECT_EQ(commands[0].driverName, "kitchen");
  EXPECT_EQ(commands[0].name, "SetSetting");
  EXPECT_EQ(commands[0].parameters, (Parameters{{"name", "sysName"}, {"value", "kitchen north"}}));
  EXPECT_EQ(commands[0].written, (Parameters{{"name", "sysName"}, {"value", "@" + folder.Path("name")}}));
  EXPECT_EQ(commands[1].parameters, (Parameters{{"name", "sysName"}, {"value", "@home"}}));
  EXPECT_EQ(commands[1].written, (Parameters{{"name", "sysName"}, {"value", "@@home"}}));
}

TEST_F(APlayedScript, ReportsWhatHappensWithItsPlace) {
  EXPECT_TRUE(Play("\nevent OnProjectLoaded a=1\n").Good());
  const auto placeOf = [this](Occurrence::Kind kind) {
    for (std::size_t i = 0; i != reporter.host.size(); ++i) {
      if (reporter.host[i].kind == kind) {
        return reporter.hostPlaces[i];
      }
    }
    return std::string("nowhere");
  };
  EXPECT_EQ(placeOf(Occurrence::Kind::Load), "at the start");
  EXPECT_EQ(placeOf(Occurrence::Kind::Event), "a.devhost:2");
  EXPECT_EQ(placeOf(Occurrence::Kind::Unload), "at the end");
}

TEST_F(APlayedScript, ReportsWhatItShows) {
  Play("device kitchen set sysName a\nshow variables\ndevice kitchen show settings\ndevice kitchen show counts\n");
  EXPECT_EQ(Only(Kind::Variables).variables.at(0).name, "lamp");
  const std::vector<DeviceSetting> settings = Only(Kind::Settings).settings.settings;
  EXPECT_THAT(settings, testing::Contains(testing::AllOf(testing::Field(&DeviceSetting::name, "sysName"),
                                                         testing::Field(&DeviceSetting::value, "a"))));
  EXPECT_EQ(Only(Kind::Settings).driverName, "kitchen");
  EXPECT_EQ(Only(Kind::Counts).counts.at(0).operation, "CopyFrom");
  EXPECT_THAT(reporter.lines, ElementsAre(1u, 2u, 3u, 4u));
  // The questions to the device are not reported.
  EXPECT_EQ(reporter.Of(Kind::Command).size(), 1u);
  std::size_t commandsAndReplies = 0;
  for (const Occurrence& each : reporter.host) {
    commandsAndReplies += each.kind == Occurrence::Kind::Command || each.kind == Occurrence::Kind::Reply ? 1 : 0;
  }
  EXPECT_EQ(commandsAndReplies, 1u) << "the reply to the command";
}

TEST_F(APlayedScript, ReportsAFileAsItStandsAndNoneThatIsMissing) {
  EXPECT_EQ(Play("device kitchen show file\n").actionsFailed, 1u);
  folder.Write("k/snmpd.conf", "sysContact a\nsysName b");
  Play("device kitchen show file\n");
  EXPECT_EQ(Only(Kind::File).text, "sysContact a\nsysName b");
  EXPECT_EQ(Only(Kind::File).driverId, 12ul);
}

TEST_F(APlayedScript, ReportsFlagsProgramsAndLines) {
  Play("flag 5 7 false\nrun echo a b\nprint 'c d'\n");
  const VariableEntry flag = Only(Kind::Flag).variables.at(0);
  EXPECT_TRUE(flag.deviceId == 5 && flag.variableId == 7 && !flag.trapEnabled);
  EXPECT_EQ(Only(Kind::Run).text, "echo a b");
  EXPECT_EQ(Only(Kind::Output).text, "a b\n");
  EXPECT_EQ(Only(Kind::Print).text, "c d");
}

TEST_F(APlayedScript, StartsAgainWithTheFlagsThatVariablesBeganWith) {
  EXPECT_TRUE(
      Play("flag 5 7 false\nvariable add 5 8 new\nrestart\nexpect flag 5 7 is true\nexpect flag 5 8 is false\n").Good());
  EXPECT_EQ(reporter.Of(Kind::Restart).size(), 1u);
}

TEST_F(APlayedScript, ExpectsNothingOfWhatCameBeforeTheLastAction) {
  project.drivers = {TestDriver(3, "well_behaved")};
  EXPECT_EQ(Play("command Say text=a\nexpect no log\ncommand Nothing\nexpect no log\n").expectationsFailed, 1u);
  EXPECT_EQ(Only(Kind::Expect).text, "there was a log line");
}

TEST_F(APlayedScript, CountsWhatFailsAndGoesOn) {
  const ScriptRunner::Result result = Play(
      "print a\ncommand NoSuchCommand\nexpect reply is <id/>\nrun false\ndevice kitchen set no-such-setting a\nprint b\n");
  EXPECT_FALSE(result.Good());
  EXPECT_EQ(result.actionsFailed, 3u);
  EXPECT_EQ(result.expectationsFailed, 1u);
  EXPECT_EQ(result.first, "a.devhost:2");
  EXPECT_EQ(reporter.Of(Kind::Print).size(), 2u);
  const std::vector<ScriptOccurrence> errors = reporter.Of(Kind::Error);
  ASSERT_EQ(errors.size(), 3u);
  EXPECT_THAT(errors[0].text, HasSubstr("no driver has registered the command \"*****\"; the commands are: "));
  EXPECT_EQ(errors[0].call, "command \"*****\"");
  EXPECT_EQ(errors[1].text, "false ended with status 1");
  EXPECT_THAT(errors[2].text, HasSubstr("kitchen refused: "));
  EXPECT_EQ(Only(Kind::Expect).text, "there has been no reply yet");
  EXPECT_THAT(Only(Kind::Expect).details, ElementsAre("expected: <id/>"));
}

TEST_F(APlayedScript, NamesTheDriverThatAnErrorIsAbout) {
  Play("command to kitchen NoSuchCommand\n");
  EXPECT_EQ(Only(Kind::Error).driverName, "kitchen");
  EXPECT_EQ(Only(Kind::Error).driverId, 12ul);
}

TEST_F(APlayedScript, FailsWhereAFileHasGoneSinceItWasChecked) {
  const std::string path = folder.Write("gone", "a");
  beforePlay = [&path] { ::unlink(path.c_str()); };
  EXPECT_EQ(Play("print a\nevent OnProjectLoaded xml=@gone\nprint b\n").actionsFailed, 1u);
  EXPECT_EQ(Only(Kind::Error).text, "cannot read \"" + path + "\": No such file or directory");
  EXPECT_EQ(reporter.Of(Kind::Print).size(), 2u);
}

TEST_F(APlayedScript, CountsWhatDriversDoWrong) {
  project.drivers = {TestDriver(3, "well_behaved", "<config result=\"7\"/>"), TestDriver(4, "rude")};
  const ScriptRunner::Result result = Play("command to rude4 LeakNode\n");
  EXPECT_EQ(result.driversFailed, 1u);
  EXPECT_GE(result.badManners, 1u);
  EXPECT_EQ(result.first, "at the start");
}

TEST_F(APlayedScript, StopsWhenNobodySeesTheReport) {
  beforePlay = [this] { reporter.failsAfter = reporter.host.size() + 1; };
  Play("print a\nprint b\nprint c\n");
  EXPECT_EQ(reporter.Of(Kind::Print).size(), 1u);
  EXPECT_EQ(reporter.host.back().kind, Occurrence::Kind::Unload);
}

TEST_F(APlayedScript, StopsWhenADriverCannotBeLoadedAgain) {
  const std::string module = folder.Path("copy.so");
  std::filesystem::copy_file(MODULE_FOLDER "/simulated_device.so", module);
  project.drivers.front().module = module;
  beforePlay = [&module] { std::filesystem::remove(module); };
  EXPECT_EQ(Play("restart\nprint a\n").actionsFailed, 1u);
  const ScriptOccurrence error = Only(Kind::Error);
  EXPECT_THAT(error.text, testing::EndsWith("; the rest of the script is not played"));
  EXPECT_EQ(error.driverId, 12ul);
  EXPECT_EQ(error.driverName, "kitchen");
  EXPECT_EQ(error.call, "loading");
  EXPECT_THAT(reporter.Of(Kind::Print), IsEmpty());
}

constexpr char kSecretive[] =
    "device kitchen set communityRead 'hidden one'\n"
    "command SetSetting name=communityWrite value=@secret\n"
    "device kitchen add-trap h hidden3 162\n"
    "device kitchen set 'hidden one' x\n"
    "event OnProjectLoaded text='they say hidden one'\n"
    "device kitchen show settings\n"
    "device kitchen show file\n"
    "run echo hidden4 and hidden one, -c hidden2\n"
    "expect setting kitchen communityRead is hidden5\n"
    "expect output is 'hidden one'\n";

TEST_F(APlayedScript, ReportsNoSecret) {
  folder.Write("secret", "hidden2");
  folder.Write("k/snmpd.conf", "rocommunity hidden4\n");
  Play(kSecretive);
  EXPECT_THAT(AllTexts(), testing::AllOf(HasSubstr("*****"), HasSubstr("OnProjectLoaded"), Not(HasSubstr("hidden"))));
  EXPECT_EQ(reporter.Of(Kind::Expect).size(), 2u);
}

TEST_F(APlayedScript, SaysNothingAboutTheEndOfAFileThatItDoesNotShow) {
  folder.Write("k/snmpd.conf", std::string("a\0b", 3));
  Play("device kitchen show file\n");
  EXPECT_EQ(Only(Kind::File).text, "(3 bytes, not shown: it holds a NUL byte)\n");
  secrets = Masker(true);
  reporter = RecordingReporter();
  Play("device kitchen show file\n");
  EXPECT_EQ(Only(Kind::File).text, std::string("a\0b", 3));
}

// A dump of what it has read, for one. What nobody has told the host is hidden behind what it is called.
TEST_F(APlayedScript, HidesSecretsInTheOutputOfAProgram) {
  Play(
      "device kitchen set communityRead geheim-geheim\n"
      "run sh -c 'echo 6765 6865 696d 2d67 6568 6569 6d; echo Z2VoZWltLWdlaGVpbQ==; echo community other'\n");
  EXPECT_EQ(Only(Kind::Output).text, "*****\n*****==\ncommunity *****\n");
}

TEST_F(APlayedScript, KnowsTheSecretsOfTheStatesThatItsDriversGet) {
  states.Save(12, "<settings><setting name='communityRead' value='a%0Dhidden'/></settings>");
  Play("print 'a hidden thing'\n");
  EXPECT_EQ(Only(Kind::Print).text, "a ***** thing");
}

TEST_F(APlayedScript, ReportsSecretsWhenAsked) {
  folder.Write("secret", "hidden2");
  folder.Write("k/snmpd.conf", "rocommunity hidden4\n");
  secrets = Masker(true);
  Play(kSecretive);
  EXPECT_THAT(AllTexts(), testing::AllOf(Not(HasSubstr("*****")), HasSubstr("hidden one"), HasSubstr("hidden2"),
                                         HasSubstr("hidden3"), HasSubstr("hidden4"), HasSubstr("hidden5")));
}

}  // namespace
}  // namespace devhost

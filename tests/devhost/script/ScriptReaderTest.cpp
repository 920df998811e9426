#include "devhost/script/ScriptReader.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

#include "devhost/script/ScriptActions.h"
#include "devhost/script/ScriptPrograms.h"
#include "devhost/system/FileText.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

DriverNames Names() {
  return DriverNames({{1, "agent", "", ""}, {12, "kitchen", "", ""}, {4294967295UL, "attic", "", ""}});
}

Script Text(const std::string& text, const std::string& folder = ".") {
  return Script{"a.devhost", folder, text};
}

std::string ErrorOf(const std::string& text, const std::string& folder = ".") {
  try {
    CheckScript(Text(text, folder), Names());
  } catch (const ScriptError& error) {
    return error.what();
  }
  return "";
}

// The only action of a script.
template <class Kind>
Kind Only(const std::string& text, const std::string& folder = ".") {
  const Script script = Text(text, folder);
  const DriverNames names = Names();
  ScriptReader reader(script, names);
  Action action;
  EXPECT_TRUE(reader.Next(action));
  Action next;
  EXPECT_FALSE(reader.Next(next));
  return std::get<Kind>(action);
}

TEST(AScript, IsReadLineByLineWithItsLineNumbers) {
  const Script script = Text("# head\n\nprint a\r\n  restart # b\nprint c");
  const DriverNames names = Names();
  ScriptReader reader(script, names);
  Action action;
  ASSERT_TRUE(reader.Next(action));
  EXPECT_EQ(std::get<PrintAction>(action).text, "a");
  EXPECT_EQ(reader.Position(), "a.devhost:3");
  ASSERT_TRUE(reader.Next(action));
  EXPECT_TRUE(std::holds_alternative<RestartAction>(action));
  EXPECT_EQ(reader.Line(), 4u);
  ASSERT_TRUE(reader.Next(action));
  EXPECT_EQ(reader.Line(), 5u);
  EXPECT_FALSE(reader.Next(action));
}

TEST(AnEmptyScript, HasNoActions) {
  EXPECT_EQ(CheckScript(Text(""), Names()), 0u);
  EXPECT_EQ(CheckScript(Text("\n# x\n \n"), Names()), 0u);
}

TEST(ACommand, GoesToWhoeverHasRegisteredIt) {
  const CommandAction action = Only<CommandAction>("command GetDeviceList a=1 b= 'c d=e f' g==");
  EXPECT_EQ(action.driverId, std::nullopt);
  EXPECT_EQ(action.name, "GetDeviceList");
  EXPECT_FALSE(action.mustSucceed);
  ASSERT_EQ(action.parameters.size(), 4u);
  EXPECT_EQ(action.parameters[0].value, "1");
  EXPECT_EQ(action.parameters[1].value, "");
  EXPECT_EQ(action.parameters[2].name, "c d");
  EXPECT_EQ(action.parameters[2].value, "e f");
  EXPECT_EQ(action.parameters[3].value, "=");
}

TEST(ACommand, GoesToTheDriverThatIsNamed) {
  EXPECT_EQ(Only<CommandAction>("command to kitchen X").driverId, 12ul);
  EXPECT_EQ(Only<CommandAction>("command to 12 X").driverId, 12ul);
  EXPECT_EQ(Only<CommandAction>("command to 4294967295 X").driverId, 4294967295ul);
}

TEST(AParameter, MayTakeItsValueFromAFile) {
  const testsupport::ScratchFolder folder;
  folder.Write("x.xml", "<a/>");
  const CommandAction action = Only<CommandAction>("command X xml=@x.xml mail=@@home", folder.Path());
  ASSERT_EQ(action.parameters.size(), 2u);
  EXPECT_TRUE(action.parameters[0].isFile);
  EXPECT_EQ(action.parameters[0].value, folder.Path("x.xml"));
  EXPECT_FALSE(action.parameters[1].isFile);
  EXPECT_EQ(action.parameters[1].value, "@home");
}

TEST(ADeviceAction, IsACommandThatMustSucceed) {
  const CommandAction action = Only<CommandAction>("device kitchen fail CopyTo -9 2");
  EXPECT_EQ(action.driverId, 12ul);
  EXPECT_EQ(action.name, "FailOperation");
  EXPECT_TRUE(action.mustSucceed);
  ASSERT_EQ(action.parameters.size(), 3u);
  EXPECT_EQ(action.parameters[0].name, "operation");
  EXPECT_EQ(action.parameters[1].name, "status");
  EXPECT_EQ(action.parameters[1].value, "-9");
  EXPECT_EQ(action.parameters[2].name, "times");
  EXPECT_EQ(Only<CommandAction>("device kitchen fail CopyTo 5").parameters.size(), 2u);
}

TEST(ADeviceAction, TakesItsWordsAsTheyAre) {
  const CommandAction action = Only<CommandAction>("device 12 set sysName @a=b");
  ASSERT_EQ(action.parameters.size(), 2u);
  EXPECT_EQ(action.parameters[0].value, "sysName");
  EXPECT_EQ(action.parameters[1].value, "@a=b");
  EXPECT_FALSE(action.parameters[1].isFile);
}

TEST(EveryDeviceVerb, IsKnown) {
  EXPECT_EQ(Only<CommandAction>("device 12 announce").name, "Announce");
  EXPECT_EQ(Only<CommandAction>("device 12 withdraw").name, "Withdraw");
  EXPECT_EQ(Only<CommandAction>("device 12 erase sysName").name, "EraseSetting");
  EXPECT_EQ(Only<CommandAction>("device 12 add-trap a b c").name, "AddTrapTarget");
  EXPECT_EQ(Only<CommandAction>("device 12 clear-traps").name, "ClearTrapTargets");
  EXPECT_EQ(Only<ShowAction>("device 12 show file").what, ShowAction::What::File);
  EXPECT_EQ(Only<ShowAction>("device 12 show settings").what, ShowAction::What::Settings);
  EXPECT_EQ(Only<ShowAction>("device 12 show counts").what, ShowAction::What::Counts);
}

TEST(AVariableAction, SaysWhatComesOrGoes) {
  const VariableAction added = Only<VariableAction>("variable add 5 4294967295 'the lamp' trap hidden");
  EXPECT_TRUE(added.add && !added.variable.user && added.variable.hidden && added.variable.trapEnabled);
  EXPECT_EQ(added.variable.deviceId, 5ul);
  EXPECT_EQ(added.variable.variableId, 4294967295ul);
  EXPECT_EQ(added.variable.name, "the lamp");
  const VariableAction user = Only<VariableAction>("user-variable add 5 0 a");
  EXPECT_TRUE(user.add && user.variable.user && !user.variable.hidden && !user.variable.trapEnabled);
  const VariableAction removed = Only<VariableAction>("variable remove 5 7");
  EXPECT_TRUE(!removed.add && !removed.variable.user);
  EXPECT_EQ(removed.variable.variableId, 7ul);
  EXPECT_TRUE(Only<VariableAction>("user-variable remove 5 7").variable.user);
}

TEST(AnItemAction, SaysWhichItemGoes) {
  EXPECT_EQ(Only<RemoveItemAction>("item remove 5").itemId, 5ul);
  EXPECT_EQ(Only<RemoveItemAction>("item remove 5").roomId, 0ul);
  EXPECT_EQ(Only<RemoveItemAction>("item remove 5 3").roomId, 3ul);
}

TEST(AFlagAction, SaysWhatTheFlagBecomes) {
  const FlagAction flag = Only<FlagAction>("flag 5 7 true");
  EXPECT_EQ(flag.deviceId, 5ul);
  EXPECT_EQ(flag.variableId, 7ul);
  EXPECT_TRUE(flag.enabled);
  EXPECT_FALSE(Only<FlagAction>("flag 5 7 false").enabled);
}

TEST(VariablesAndStates, CanBeShownAndExpected) {
  EXPECT_EQ(Only<ShowAction>("show variables").what, ShowAction::What::Variables);
  EXPECT_EQ(Only<ShowAction>("show state kitchen").what, ShowAction::What::State);
  EXPECT_EQ(Only<ShowAction>("show state kitchen").driverId, 12ul);
  const ExpectAction flag = Only<ExpectAction>("expect flag 5 7 is true");
  EXPECT_EQ(flag.subject, ExpectAction::Subject::Flag);
  EXPECT_EQ(flag.driverId, 5ul);
  EXPECT_EQ(flag.variableId, 7ul);
  EXPECT_EQ(flag.text, "true");
  const ExpectAction state = Only<ExpectAction>("expect state kitchen matches a");
  EXPECT_EQ(state.subject, ExpectAction::Subject::State);
  EXPECT_EQ(state.driverId, 12ul);
}

TEST(AnExpectation, SaysWhatAndHow) {
  const ExpectAction reply = Only<ExpectAction>("expect reply is '<Success/>'");
  EXPECT_EQ(reply.subject, ExpectAction::Subject::Reply);
  EXPECT_EQ(reply.comparison, ExpectAction::Comparison::Is);
  EXPECT_EQ(reply.text, "<Success/>");
  const ExpectAction setting = Only<ExpectAction>("expect setting kitchen sysName matches '^k'");
  EXPECT_EQ(setting.subject, ExpectAction::Subject::Setting);
  EXPECT_EQ(setting.driverId, 12ul);
  EXPECT_EQ(setting.setting, "sysName");
  EXPECT_EQ(setting.comparison, ExpectAction::Comparison::Matches);
  const ExpectAction none = Only<ExpectAction>("expect no log");
  EXPECT_EQ(none.subject, ExpectAction::Subject::Log);
  EXPECT_EQ(none.comparison, ExpectAction::Comparison::None);
  const testsupport::ScratchFolder folder;
  folder.Write("a.conf", "");
  const ExpectAction file = Only<ExpectAction>("expect file kitchen golden a.conf", folder.Path());
  EXPECT_EQ(file.subject, ExpectAction::Subject::File);
  EXPECT_EQ(file.comparison, ExpectAction::Comparison::Golden);
  EXPECT_EQ(file.text, folder.Path("a.conf"));
}

TEST(AnEvent, MayCarryTheSameParameterTwice) {
  EXPECT_EQ(Only<EventAction>("event OnItemRemoved iditem=1 iditem=2").parameters.size(), 2u);
}

TEST(AWrongLine, IsNamedWithItsNumberAndWhatIsAllowed) {
  EXPECT_EQ(ErrorOf("print a\n\ncomand x\nprint"),
            "a.devhost:3: unknown action \"comand\"; allowed: command, event, device, variable, user-variable, item, flag, "
            "load-project, show, restart, run, print, expect");
}

TEST(AParameterWithoutAValue, IsRefused) {
  EXPECT_EQ(ErrorOf("command RebootController deviceId"),
            "a.devhost:1: the parameter \"deviceId\" has no value: write deviceId=VALUE, or deviceId= for an empty one");
}

TEST(ADriverThatIsNotInTheProject, IsRefusedWithTheOnesThatAre) {
  EXPECT_EQ(ErrorOf("device cellar announce"),
            "a.devhost:1: there is no driver \"cellar\"; the drivers of this project are: agent (1), kitchen (12), attic "
            "(4294967295)");
  EXPECT_THAT(ErrorOf("command to 13 X"), HasSubstr("there is no driver \"13\""));
  EXPECT_THAT(ErrorOf("expect file 12x is a"), HasSubstr("there is no driver \"12x\""));
}

struct Wrong {
  const char* line;
  const char* message;
};

class AWrongLineOf : public testing::TestWithParam<Wrong> {};

TEST_P(AWrongLineOf, IsRefused) {
  EXPECT_THAT(ErrorOf(GetParam().line), testing::AllOf(StartsWith("a.devhost:1: "), HasSubstr(GetParam().message)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, AWrongLineOf,
    testing::Values(
        Wrong{"command", "the command has no name; allowed: command [to DRIVER] NAME"},
        Wrong{"command a=b", "the command has no name"}, Wrong{"command ''", "the command has no name"},
        Wrong{"command to", "\"command to\" names no driver"}, Wrong{"command to agent", "the command has no name"},
        Wrong{"command X =1", "has no name: write NAME=VALUE"},
        Wrong{"command X a=1 a=2", "the parameter \"a\" is given twice"},
        Wrong{"command X a=@no/such", "cannot read \"no/such\": No such file"},
        Wrong{"command X a=@/", "cannot read \"/\": Is a directory"}, Wrong{"event", "the event has no name"},
        Wrong{"event OnProjectLoaded a", "has no value"}, Wrong{"restart now", "\"restart\" is followed by \"now\""},
        Wrong{"device", "names no driver"}, Wrong{"device kitchen", "nothing is said about what the device shall do"},
        Wrong{"device kitchen jump", "a device cannot \"jump\"; allowed: announce, withdraw"},
        Wrong{"device kitchen announce now", "\"announce\" has 1 word after it; allowed: device DRIVER announce"},
        Wrong{"device kitchen set a", "\"set\" has 1 word after it; allowed: device DRIVER set NAME VALUE"},
        Wrong{"device kitchen set a b c", "\"set\" has 3 words after it"},
        Wrong{"device kitchen fail CopyTo", "\"fail\" has 1 word after it"},
        Wrong{"device kitchen fail CopyTo x",
              "the status is \"x\"; allowed: a whole number from -2147483648 to 2147483647, 0 for success"},
        Wrong{"device kitchen fail CopyTo 2147483648",
              "the status is \"2147483648\"; allowed: a whole number from -2147483648 to 2147483647, 0 for success"},
        Wrong{"device kitchen fail CopyTo 1 0",
              "the number of times is \"0\"; allowed: a whole number from 1 to 2147483647, or none for every time"},
        Wrong{"device kitchen fail CopyTo 1 2147483648", "allowed: a whole number from 1 to 2147483647"},
        Wrong{"device kitchen show", "\"show\" takes one word"}, Wrong{"device kitchen show x", "\"x\" cannot be shown"},
        Wrong{"device kitchen show file x", "\"show\" takes one word"},
        Wrong{"variable", "nothing is said about what becomes of the variable; allowed: variable add DEVICE ID NAME"},
        Wrong{"user-variable move",
              "a variable cannot \"move\"; allowed: user-variable add DEVICE ID NAME [hidden] [trap], "
              "user-variable remove DEVICE ID"},
        Wrong{"variable add 5 7", "something is missing after \"7\"; allowed: variable add DEVICE ID NAME [hidden] [trap]"},
        Wrong{"variable add 5 7 ''", "the variable's name is empty"},
        Wrong{"variable add 5 7 a b", "a variable's name is followed by \"b\""},
        Wrong{"variable add 5 7 a trap trap", "a variable's name is followed by \"trap\""},
        Wrong{"variable add -1 7 a", "the device is \"-1\"; allowed: a whole number from 0 to 4294967295"},
        Wrong{"variable add 5 4294967296 a", "the variable's id is \"4294967296\""},
        Wrong{"variable remove 5", "something is missing after \"5\"; allowed: variable remove DEVICE ID"},
        Wrong{"variable remove 5 7 a", "there is something behind \"7\""},
        Wrong{"item", "something is missing after \"item\"; allowed: item remove ITEM [ROOM]"},
        Wrong{"item add 5", "an item cannot \"add\""}, Wrong{"item remove x", "the item is \"x\""},
        Wrong{"item remove 5 x", "the room is \"x\""}, Wrong{"item remove 5 3 1", "there is something behind \"3\""},
        Wrong{"flag 5 7", "something is missing after \"7\"; allowed: flag DEVICE ID true|false"},
        Wrong{"flag 5 7 on", "a flag cannot be \"on\""}, Wrong{"flag 5 x true", "the variable's id is \"x\""},
        Wrong{"load-project now", "\"load-project\" is followed by \"now\""},
        Wrong{"show", "nothing is said about what to show; allowed: show variables, show state DRIVER"},
        Wrong{"show flags", "\"flags\" cannot be shown"}, Wrong{"show state", "\"show state\" has another form"},
        Wrong{"show state cellar", "there is no driver \"cellar\""},
        Wrong{"expect flag 5", "something is missing after \"5\""}, Wrong{"expect flag x 7 is true", "the device is \"x\""},
        Wrong{"expect state", "something is missing after \"state\""},
        Wrong{"event OnDoomsday", "there is no system event \"OnDoomsday\"; allowed: OnProjectLoaded, OnItemRemoved"},
        Wrong{"expect", "nothing is said about what to expect"},
        Wrong{"expect answer is a", "\"answer\" cannot be expected"},
        Wrong{"expect reply", "the expectation is not finished"},
        Wrong{"expect reply is", "the expectation is not finished"}, Wrong{"expect reply is a b", "1 more words"},
        Wrong{"expect reply was a", "cannot compare with \"was\""},
        Wrong{"expect reply matches '['", "\"[\" is not an extended regular expression"},
        Wrong{"expect reply golden no/such", "cannot read \"no/such\""},
        Wrong{"expect setting kitchen", "something is missing after \"kitchen\""},
        Wrong{"expect no", "\"expect no\" is followed by nothing"},
        Wrong{"expect no reply", "\"expect no\" is followed by \"reply\""},
        Wrong{"print 'a", "a single quote is never closed"}, Wrong{"print \"a", "a double quote is never closed"},
        Wrong{"print \\", "a backslash ends the line"}));

TEST(AScriptWithANulByte, IsRefused) {
  EXPECT_EQ(ErrorOf(std::string("print a\nprint \0b\n", 17)), "a.devhost:2: the line holds a NUL byte: a script is text");
}

TEST(AMessageAboutALongLine, IsShort) {
  EXPECT_LT(ErrorOf(std::string(1000000, 'x')).size(), 500u);
}

TEST(EveryFormThatHelpShows, StartsWithAnActionThatTheReaderKnows) {
  for (const ActionForm& form : ActionForms()) {
    const std::string first = std::string(form.synopsis).substr(0, std::string(form.synopsis).find(' '));
    EXPECT_EQ(ErrorOf(first).find("unknown action"), std::string::npos) << form.synopsis;
  }
}

TEST(AWrongLine, IsNamedWithoutTheSecretThatItSpills) {
  EXPECT_EQ(ErrorOf("command SetSetting name=communityRead value=my house"),
            "a.devhost:1: the parameter \"*****\" has no value: write *****=VALUE, or *****= for an empty one");
  EXPECT_EQ(ErrorOf("command AddTrapTarget target=h community=our house port=162"),
            "a.devhost:1: the parameter \"*****\" has no value: write *****=VALUE, or *****= for an empty one");
  EXPECT_THAT(ErrorOf("expect setting kitchen communityRead matches '(" + std::string(1100, 'x') + "'"),
              testing::AllOf(StartsWith("a.devhost:1: "), testing::Not(HasSubstr("xxx"))));
  const std::string spilt(300, 's');
  EXPECT_EQ(ErrorOf("command SetSetting name=communityRead " + spilt),
            "a.devhost:1: the parameter \"*****...\" (300 bytes) has no value: write NAME=VALUE, or NAME= for an empty one");
  EXPECT_THAT(ErrorOf("expect setting kitchen communityRead matches \"ab\\tcdSECRET(\""),
              testing::AllOf(HasSubstr("\"*****\" is not an extended"), testing::Not(HasSubstr("SECRET"))));
  EXPECT_THAT(ErrorOf("expect setting kitchen communityRead SECRET x"),
              testing::AllOf(HasSubstr("cannot compare with \"*****\""), testing::Not(HasSubstr("SECRET"))));
  EXPECT_THAT(ErrorOf("expect setting kitchen communityRead matches SECRET x"),
              testing::AllOf(HasSubstr("matches"), testing::Not(HasSubstr("SECRET"))));
  EXPECT_THAT(ErrorOf("command SetSetting name=sysName value=my house"), HasSubstr("\"house\""));
  EXPECT_EQ(ErrorOf(std::string("print 'community \0", 18)), "a.devhost:1: the line holds a NUL byte: a script is text");
}

TEST(ARun, HasTheProgramsWordsAndTheScriptsFolder) {
  const testsupport::ScratchFolder folder;
  const RunAction run = Only<RunAction>("run sh -c 'echo a' \"\" {address:kitchen}", folder.Path());
  EXPECT_THAT(run.words, testing::ElementsAre("sh", "-c", "echo a", "", "{address:kitchen}"));
  EXPECT_EQ(run.folder, folder.Path());
  EXPECT_EQ(Only<RunAction>("run true").folder, "");
}

TEST(ARun, OfAProgramThatIsNotThereIsWrong) {
  const testsupport::ScratchFolder folder;
  folder.Write("text", "no program");
  EXPECT_EQ(ErrorOf("run"), "a.devhost:1: \"run\" names no program; allowed: run PROGRAM [WORD]...");
  EXPECT_THAT(ErrorOf("run no-such-program-at-all"), HasSubstr("cannot run \"no-such-program-at-all\": it is not in PATH"));
  EXPECT_THAT(ErrorOf("run ./gone", folder.Path()), HasSubstr("cannot run \"./gone\": No such file or directory"));
  EXPECT_THAT(ErrorOf("run ./text", folder.Path()), HasSubstr("cannot run \"./text\": Permission denied"));
}

TEST(ARun, WithTheAddressOfAnUnknownDriverIsWrong) {
  EXPECT_THAT(ErrorOf("run echo udp:{address:12}/{address:attics}"), HasSubstr("there is no driver \"attics\""));
  EXPECT_EQ(ErrorOf("run echo {address:12} {address:attic} {address:open {adress:x}"), "");
}

TEST(AnAddress, IsPutInWhereverItStandsInAWord) {
  const auto address = [](const std::string& driver) { return "<" + driver + ">"; };
  EXPECT_EQ(WithAddresses("a{address:k}b{address:7}", address), "a<k>b<7>");
  EXPECT_EQ(WithAddresses("{address:k", address), "{address:k");
  EXPECT_EQ(WithAddresses("", address), "");
}

TEST(ADevice, GoesOnAndOffLineByACommandThatHasToSucceed) {
  for (const bool online : {true, false}) {
    const CommandAction action = Only<CommandAction>(online ? "device kitchen online" : "device kitchen offline");
    EXPECT_EQ(action.driverId, 12UL);
    EXPECT_EQ(action.name, "SetOnline");
    EXPECT_TRUE(action.mustSucceed);
    ASSERT_EQ(action.parameters.size(), 1U);
    EXPECT_EQ(action.parameters[0].name, "online");
    EXPECT_EQ(action.parameters[0].value, online ? "true" : "false");
  }
  EXPECT_EQ(Only<ShowAction>("device kitchen show daemon").what, ShowAction::What::Daemon);
}

TEST(ManyLines, AreReadInTimeThatGrowsWithTheirNumber) {
  const auto seconds = [](std::size_t lines) {
    std::string text;
    for (std::size_t i = 0; i != lines; ++i) {
      text += "command SetX a='b c' d=e # x\n";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(CheckScript(Text(text), Names()), lines);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  const double few = seconds(10000);
  // Thirty times the lines; quadratic reading would take 900 times as long.
  EXPECT_LT(seconds(300000), 300 * few + 1);
}

TEST(ALineOfManyMegabytes, IsReadInTimeThatGrowsWithItsLength) {
  EXPECT_EQ(Only<PrintAction>("print '" + std::string(5000000, 'x') + "'").text.size(), 5000000u);
  std::string words = "command X";
  for (int i = 0; i != 100000; ++i) {
    words += " p" + std::to_string(i) + "=1";
  }
  EXPECT_EQ(Only<CommandAction>(words).parameters.size(), 100000u);
}

}  // namespace
}  // namespace devhost

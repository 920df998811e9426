#include "devhost/script/ScriptActions.h"

#include <gmock/gmock.h>

#include <array>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/text/Words.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;

DriverNames Names() {
  return DriverNames({{1, "agent", "", ""}, {12, "kitchen", "", ""}, {4294967295UL, "attic", "", ""}});
}

std::string ErrorOf(const std::string& line, const std::string& folder = ".") {
  try {
    ParseAction(SplitWords(line), folder, Names());
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

// The action of a line.
template <class Kind>
Kind Only(const std::string& line, const std::string& folder = ".") {
  return std::get<Kind>(ParseAction(SplitWords(line), folder, Names()));
}

TEST(TheNextWord, IsOneOfTheLanguageOrADriver) {
  const KnownNames known{
      {{1, "agent"}, {12, "kitchen"}},
      {{"agent", {"GetDeviceList", "StartMasterAgent", "StopMasterAgent"}}, {"kitchen", {"GetSettings"}}}};
  const auto next = [&known](const std::string& line) { return NextWords(line, known); };
  using Words = std::vector<std::string>;
  EXPECT_EQ(next("re"), (Words{"restart"}));
  EXPECT_EQ(next("device "), (Words{"agent", "kitchen"}));
  EXPECT_EQ(next("device ki"), (Words{"kitchen"}));
  EXPECT_EQ(next("device kitchen off"), (Words{"offline"}));
  EXPECT_EQ(next("device 'kitchen'  show "), (Words{"counts", "daemon", "file", "settings"}));
  EXPECT_EQ(next("expect fi"), (Words{"file"}));
  EXPECT_EQ(next("expect file kitchen "), (Words{"golden", "is", "matches"}));
  EXPECT_EQ(next("flag 5 7 t"), (Words{"true"}));
  EXPECT_EQ(next("device 1"), (Words{"1", "12"}));
  EXPECT_EQ(next("command GetD"), (Words{"GetDeviceList"}));
  EXPECT_EQ(next("command St"), (Words{"StartMasterAgent", "StopMasterAgent"}));
  EXPECT_EQ(next("command "), (Words{"GetDeviceList", "GetSettings", "StartMasterAgent", "StopMasterAgent", "to"}));
  EXPECT_EQ(next("command to k"), (Words{"kitchen"}));
  EXPECT_EQ(next("command to kitchen "), (Words{"GetSettings"}));
  EXPECT_EQ(next("command to 1 Get"), (Words{"GetDeviceList"}));
  EXPECT_EQ(next("command to kitchen GetSettings "), Words());
  EXPECT_EQ(next("command StopMasterAgent d"), (Words{"deviceId=1", "deviceId=12"}));
  EXPECT_EQ(next("command StopMasterAgent deviceId=12"), (Words{"deviceId=12"}));
  EXPECT_EQ(next("command StopMasterAgent x"), Words());
  EXPECT_EQ(next("device kitchen set "), Words());
  EXPECT_EQ(next("nonsense "), Words());
  EXPECT_EQ(next("restart "), Words());
  EXPECT_EQ(next("print 'device "), Words());
  EXPECT_THAT(next(""), testing::IsSupersetOf({"command", "device", "expect"}));
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
  EXPECT_EQ(Only<ShowAction>("device 12 show file").what, ScriptOccurrence::Kind::File);
  EXPECT_EQ(Only<ShowAction>("device 12 show settings").what, ScriptOccurrence::Kind::Settings);
  EXPECT_EQ(Only<ShowAction>("device 12 show counts").what, ScriptOccurrence::Kind::Counts);
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
  EXPECT_EQ(Only<ShowAction>("show variables").what, ScriptOccurrence::Kind::Variables);
  EXPECT_EQ(Only<ShowAction>("show state kitchen").what, ScriptOccurrence::Kind::State);
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

TEST(ADriverThatIsNotInTheProject, IsRefusedWithTheOnesThatAre) {
  EXPECT_EQ(ErrorOf("device cellar announce"),
            "there is no driver of that name or id; the drivers of this project are: agent (1), kitchen (12), attic "
            "(4294967295)");
  EXPECT_THAT(ErrorOf("command to 13 X"), HasSubstr("there is no driver of that name or id"));
  EXPECT_THAT(ErrorOf("expect file 12x is a"), HasSubstr("there is no driver of that name or id"));
}

TEST(ARun, HasTheProgramsWordsAndTheScriptsFolder) {
  const testsupport::ScratchFolder folder;
  const RunAction run = Only<RunAction>("run sh -c 'echo a' \"\" {address:kitchen}", folder.Path());
  EXPECT_THAT(run.words, testing::ElementsAre("sh", "-c", "echo a", "", "{address:kitchen}"));
  EXPECT_EQ(run.folder, folder.Path());
  EXPECT_EQ(Only<RunAction>("run true").folder, "");
}

TEST(ARun, WithTheAddressOfAnUnknownDriverIsWrong) {
  EXPECT_THAT(ErrorOf("run echo udp:{address:12}/{address:attics}"), HasSubstr("there is no driver of that name or id"));
  EXPECT_EQ(ErrorOf("run echo {address:12} {address:attic} {address:open {adress:x}"), "");
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
  EXPECT_EQ(Only<ShowAction>("device kitchen show daemon").what, ScriptOccurrence::Kind::Daemon);
}

// Lines that have no form of the language. ScriptFormTest has the messages as such.
TEST(ALineWithoutAForm, IsRefused) {
  const std::string action = "device DRIVER announce|withdraw|set|erase|add-trap|clear-traps|fail|online|offline|show ...";
  const std::string variable = "variable add DEVICE ID NAME [hidden] [trap]";
  const std::string command = "command to DRIVER NAME [PARAM=VALUE]...";
  const std::string show = "device DRIVER show file|settings|counts|daemon";
  const std::string subject = "expect reply|notification|log|output|setting|file|flag|state|no ...";
  for (const auto& [line, beginning, next, allowed] : std::vector<std::array<std::string, 4>>{
           {"command", "command", "nothing", "command NAME|to ..."},
           {"command to", "command to", "nothing", command},
           {"command to agent", "command to DRIVER", "nothing", command},
           {"event", "event", "nothing", "event NAME [PARAM=VALUE]..."},
           {"restart now", "restart", "1 more word", "restart"},
           {"device", "device", "nothing", "device DRIVER ..."},
           {"device kitchen", "device DRIVER", "nothing", action},
           {"device kitchen jump", "device DRIVER", "another word", action},
           {"device kitchen announce now", "device DRIVER announce", "1 more word", "device DRIVER announce"},
           {"device kitchen set a", "device DRIVER set NAME", "nothing", "device DRIVER set NAME VALUE"},
           {"device kitchen set a b c", "device DRIVER set NAME VALUE", "1 more word",
            "device DRIVER set NAME VALUE (a text with blanks stands in quotes)"},
           {"device kitchen fail CopyTo", "device DRIVER fail OPERATION", "nothing",
            "device DRIVER fail OPERATION STATUS [TIMES]"},
           {"device kitchen show", "device DRIVER show", "nothing", show},
           {"device kitchen show x", "device DRIVER show", "another word", show},
           {"device kitchen show file x", show, "1 more word", show},
           {"device kitchen online now", "device DRIVER online", "1 more word", "device DRIVER online"},
           {"variable", "variable", "nothing", "variable add|remove ..."},
           {"user-variable move", "user-variable", "another word", "user-variable add|remove ..."},
           {"variable add 5 7", "variable add DEVICE ID", "nothing", variable},
           {"variable add 5 7 a b", "variable add DEVICE ID NAME", "another word", variable},
           {"variable add 5 7 a trap trap", "variable add DEVICE ID NAME hidden|trap", "another word", variable},
           {"variable remove 5", "variable remove DEVICE", "nothing", "variable remove DEVICE ID"},
           {"variable remove 5 7 a", "variable remove DEVICE ID", "1 more word",
            "variable remove DEVICE ID (a text with blanks stands in quotes)"},
           {"item", "item", "nothing", "item remove ITEM [ROOM]"},
           {"item add 5", "item", "another word", "item remove ITEM [ROOM]"},
           {"item remove 5 3 1", "item remove ITEM ROOM", "1 more word",
            "item remove ITEM [ROOM] (a text with blanks stands in quotes)"},
           {"flag 5 7", "flag DEVICE ID", "nothing", "flag DEVICE ID true|false"},
           {"flag 5 7 on", "flag DEVICE ID", "another word", "flag DEVICE ID true|false"},
           {"load-project now", "load-project", "1 more word", "load-project"},
           {"show", "show", "nothing", "show variables|state ..."},
           {"show flags", "show", "another word", "show variables|state ..."},
           {"show state", "show state", "nothing", "show state DRIVER"},
           {"run", "run", "nothing", "run PROGRAM [WORD]..."},
           {"expect", "expect", "nothing", subject},
           {"expect answer is a", "expect", "another word", subject},
           {"expect reply", "expect reply", "nothing", "expect reply is|matches|golden ..."},
           {"expect reply is", "expect reply is", "nothing", "expect SUBJECT is TEXT"},
           {"expect reply is a b", "expect reply is TEXT", "1 more word",
            "expect SUBJECT is TEXT (a text with blanks stands in quotes)"},
           {"expect reply was a", "expect reply", "another word", "expect reply is|matches|golden ..."},
           {"expect flag 5", "expect flag DEVICE", "nothing", "expect flag DEVICE ID ..."},
           {"expect state", "expect state", "nothing", "expect state DRIVER ..."},
           {"expect setting kitchen", "expect setting DRIVER", "nothing", "expect setting DRIVER NAME ..."},
           {"expect no", "expect no", "nothing", "expect no notification|log"},
           {"expect no reply", "expect no", "another word", "expect no notification|log"}}) {
    EXPECT_EQ(ErrorOf(line), "\"" + beginning + "\" is followed by " + next + "; allowed: " + allowed);
  }
}

// Lines that have a form, but hold a word that means nothing there.
TEST(AWordThatMeansNothing, IsRefusedWithWhatIsAllowed) {
  constexpr char kInteger[] = "; allowed: a whole number from -2147483648 to 2147483647, 0 for success";
  constexpr char kTimes[] = "; allowed: a whole number from 1 to 2147483647, or none for every time";
  constexpr char kCommand[] = "the command has no name; allowed: command NAME [PARAM=VALUE]...";
  EXPECT_EQ(ErrorOf("command a=b"), kCommand);
  EXPECT_EQ(ErrorOf("command ''"), kCommand);
  EXPECT_EQ(ErrorOf("command X a=1 a=2"), "a parameter is given twice: a command takes each one once");
  EXPECT_EQ(ErrorOf("command X port=1 port=2"), "the parameter \"port\" is given twice: a command takes each one once");
  EXPECT_EQ(ErrorOf("event ''"), "the event has no name; allowed: event NAME [PARAM=VALUE]...");
  EXPECT_THAT(ErrorOf("event OnDoomsday"),
              HasSubstr("there is no such system event; allowed: OnProjectLoaded, OnItemRemoved"));
  EXPECT_EQ(ErrorOf("device kitchen fail CopyTo x"), std::string("STATUS is wrong") + kInteger);
  EXPECT_EQ(ErrorOf("device kitchen fail CopyTo 2147483648"), std::string("STATUS is wrong") + kInteger);
  EXPECT_EQ(ErrorOf("device kitchen fail CopyTo 1 0"), std::string("TIMES is wrong") + kTimes);
  EXPECT_EQ(ErrorOf("device kitchen fail CopyTo 1 2147483648"), std::string("TIMES is wrong") + kTimes);
  EXPECT_EQ(ErrorOf("variable add 5 7 ''"), "NAME is empty; allowed: variable add DEVICE ID NAME [hidden] [trap]");
  EXPECT_THAT(ErrorOf("variable add -1 7 a"), HasSubstr("DEVICE is wrong; allowed: a whole number from 0 to 4294967295"));
  EXPECT_THAT(ErrorOf("variable add 5 4294967296 a"), HasSubstr("ID is wrong"));
  EXPECT_THAT(ErrorOf("item remove x"), HasSubstr("ITEM is wrong"));
  EXPECT_THAT(ErrorOf("item remove 5 x"), HasSubstr("ROOM is wrong"));
  EXPECT_THAT(ErrorOf("flag 5 x true"), HasSubstr("ID is wrong"));
  EXPECT_THAT(ErrorOf("expect flag x 7 is true"), HasSubstr("DEVICE is wrong"));
  EXPECT_THAT(ErrorOf("show state cellar"), HasSubstr("there is no driver of that name or id"));
  EXPECT_THAT(ErrorOf("expect reply matches '['"), HasSubstr("the expression is not an extended regular expression"));
  EXPECT_THAT(ErrorOf("expect reply golden no/such"), HasSubstr("cannot read \"no/such\""));
}

TEST(AnExpectedFile, IsARegularFile) {
  EXPECT_EQ(ErrorOf("expect file kitchen golden /dev/null"), "cannot read \"/dev/null\": it is not a regular file");
}

TEST(EveryAction, HasAFormOfItsOwnAndAMeaning) {
  std::set<std::string> synopses;
  for (const ActionForm& form : ActionForms()) {
    EXPECT_TRUE(synopses.insert(form.synopsis).second) << form.synopsis;
    EXPECT_NE(std::string(form.meaning), "") << form.synopsis;
    EXPECT_NE(form.make, nullptr) << form.synopsis;
  }
  EXPECT_GE(synopses.size(), 25u);
}

TEST(EverySubject, CanBeComparedInEachWay) {
  const testsupport::ScratchFolder folder;
  folder.Write("a", "");
  std::set<ExpectAction::Subject> subjects;
  for (const SubjectForm& subject : SubjectForms()) {
    std::string line = std::string("expect ") + subject.synopsis;
    for (const auto& [place, word] : {std::pair{"DRIVER", "kitchen"}, {"DEVICE", "5"}, {"ID", "7"}}) {
      const std::size_t at = line.find(place);
      line = at == std::string::npos ? line : line.replace(at, std::string(place).size(), word);
    }
    for (const char* comparison : {" is a", " matches a", " golden a"}) {
      EXPECT_EQ(Only<ExpectAction>(line + comparison, folder.Path()).subject, subject.subject) << line;
    }
    subjects.insert(subject.subject);
  }
  EXPECT_EQ(subjects.size(), SubjectForms().size());
}

}  // namespace
}  // namespace devhost

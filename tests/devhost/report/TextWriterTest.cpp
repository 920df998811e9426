#include "devhost/report/TextWriter.h"

#include <gmock/gmock.h>

#include <string>

#include "tests/devhost/report/Written.h"

namespace devhost {
namespace {

// What a writer of that style writes about one thing.
template <class Any>
std::string Printed(const Any& occurrence, TextStyle style = TextStyle()) {
  return Written([&](Output& output) { TextWriter(output, style).Report(occurrence, {"a.devhost:7", 7}); });
}

Occurrence Make(Occurrence::Kind kind, const std::string& name, const std::string& text) {
  Occurrence occurrence{kind, 12, "kitchen", name, text};
  occurrence.level = 3;
  return occurrence;
}

TextStyle Pretty() {
  return TextStyle{true, false};
}

TEST(AReply, IsOneLineOfCompactXml) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "a", "<a><b>c</b></a>")), "reply kitchen <a><b>c</b></a>\n");
}

TEST(AReplyWithALineFeed, IsOneLineAllTheSame) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "a", "<a>b\nc</a>")), "reply kitchen <a>b&#10;c</a>\n");
}

TEST(AReplyThatIsMissing, IsItsFirstWordAndDriver) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "", "")), "reply kitchen\n");
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "", ""), Pretty()), "reply kitchen\n");
}

TEST(AReplyInPrettyStyle, IsIndented) {
  const std::string fits(100 - std::string("reply kitchen <a><b></b></a>").size(), 'c');
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "a", "<a><b>" + fits + "</b></a>"), Pretty()),
            "reply kitchen <a><b>" + fits + "</b></a>\n");
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "a", "<a><b>c" + fits + "</b></a>"), Pretty()),
            "reply kitchen\n  <a>\n    <b>c" + fits + "</b>\n  </a>\n");
}

TEST(AReplyInPrettyStyleThatCannotBeLaidOut, IsPrintedAsItCame) {
  const std::string xml = "<a>" + std::string(100, 'x');
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "a", xml), Pretty()), "reply kitchen " + xml + "\n");
}

TEST(ALogLine, CarriesItsLevelAndShowsControlCharacters) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Log, "", "a\nb\x1b[31m")), "log kitchen 3 a\\nb\\x1b[31m\n");
}

TEST(ALogLineOfNobody, HasADashForItsDriver) {
  EXPECT_EQ(Printed(Occurrence{Occurrence::Kind::Log, 0, "", "", "a"}), "log - 0 a\n");
}

TEST(ACommand, IsPrintedAsAScriptWritesIt) {
  Occurrence command{Occurrence::Kind::Command, 12, "kitchen", "Echo", ""};
  command.parameters = {{"text", "a b"}, {"number", "12"}};
  EXPECT_EQ(Printed(command), "command kitchen Echo text='a b' number=12\n");
}

TEST(BadManners, NameTheCandidatesAndTheCall) {
  Occurrence manners{Occurrence::Kind::Manners, 0, "", "", "too early"};
  manners.candidates = {"kitchen", "cellar"};
  manners.call = "stop";
  EXPECT_EQ(Printed(manners), "manners kitchen|cellar too early, during stop (a.devhost:7)\n");
}

TEST(BadManners, NameWhatTheScriptWasDoing) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Manners, "", "too early")), "manners kitchen too early (a.devhost:7)\n");
}

TEST(AStatus, NamesTheOperationAndTheCall) {
  Occurrence status = Make(Occurrence::Kind::Status, "CopyTo", "CopyTo returned 5");
  status.call = "command \"SetDeviceState\" of driver 1 \"agent\"";
  EXPECT_EQ(Printed(status), "status kitchen CopyTo returned 5, during command \"SetDeviceState\" of driver 1 \"agent\"\n");
}

TEST(AnInvalidatedState, IsItsFirstWordAndDriver) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Invalidate, "", "")), "invalidate kitchen\n");
}

TEST(InColour, OnlyTheFirstWordIsColoured) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "a", "<a/>"), TextStyle{false, true}),
            "\x1b[1;32mreply\x1b[0m kitchen <a/>\n");
}

using Kind = ScriptOccurrence::Kind;

ScriptOccurrence Script(Kind kind, const std::string& text) {
  return {kind, 12, "kitchen", text};
}

TEST(ACommandOfTheScript, IsShownAsTheScriptWritesIt) {
  ScriptOccurrence command = Script(Kind::Command, "");
  command.name = "SetX";
  command.parameters = {{"xml", "<a/>"}};
  command.written = {{"xml", "@a b.xml"}};
  EXPECT_EQ(Printed(command), "command kitchen SetX xml='@a b.xml'\n");
}

TEST(ARestart, IsOneWord) {
  EXPECT_EQ(Printed(ScriptOccurrence{Kind::Restart}), "restart\n");
}

TEST(AFlag, HasItsIds) {
  ScriptOccurrence flag{Kind::Flag};
  flag.variables = {{5, 7, "", false, false, true}};
  EXPECT_EQ(Printed(flag), "flag 5 7 true\n");
}

TEST(AFile, IsShownLineByLine) {
  EXPECT_EQ(Printed(Script(Kind::File, "a\n\nb\x1b\n")), "file kitchen | a\nfile kitchen | \nfile kitchen | b\\x1b\n");
  EXPECT_EQ(Printed(Script(Kind::File, "a")), "file kitchen | a\nfile kitchen (no line feed at the end)\n");
  EXPECT_EQ(Printed(Script(Kind::File, "")), "file kitchen (empty)\n");
}

TEST(Settings, AreOneLineEach) {
  ScriptOccurrence shown = Script(Kind::Settings, "");
  shown.settings.settings = {{"enabled", "true"}, {"sysName", "my box"}, {"sysContact", "", true}};
  shown.settings.trapTargets = {{"10.0.0.5", "pub lic", ""}};
  EXPECT_EQ(Printed(shown),
            "settings kitchen enabled=true\nsettings kitchen sysName='my box'\nsettings kitchen sysContact='' erased\n"
            "settings kitchen trapTarget=10.0.0.5 community='pub lic' port=''\n");
}

TEST(Counts, AreOneLine) {
  ScriptOccurrence shown = Script(Kind::Counts, "");
  shown.counts = {{"CopyFrom", 3}, {"CopyTo", 0}};
  EXPECT_EQ(Printed(shown), "counts kitchen CopyFrom=3 CopyTo=0\n");
}

TEST(ADaemon, IsOneLine) {
  ScriptOccurrence shown = Script(Kind::Daemon, "");
  shown.daemon = {true, 4711, "udp:127.0.0.1:40161", true, false};
  EXPECT_EQ(Printed(shown), "daemon kitchen running pid=4711 address=udp:127.0.0.1:40161 online\n");
  shown.daemon = {false, 0, "udp:127.0.0.1:40161", false, true};
  EXPECT_EQ(Printed(shown), "daemon kitchen stopped address=udp:127.0.0.1:40161 offline pending\n");
}

TEST(AState, IsXml) {
  EXPECT_EQ(Printed(Script(Kind::State, "<State/>")), "state kitchen <State/>\n");
  EXPECT_EQ(Printed(Script(Kind::State, "")), "state kitchen\n");
}

TEST(Variables, AreOneLineEach) {
  ScriptOccurrence shown{Kind::Variables};
  EXPECT_EQ(Printed(shown), "variable (none)\n");
  shown.variables = {{5, 7, "the lamp", false, true, false}, {5, 8, "x", true, false, true}};
  EXPECT_EQ(Printed(shown),
            "variable 5 7 name='the lamp' hidden=true trapEnabled=false\n"
            "user-variable 5 8 name=x hidden=false trapEnabled=true\n");
}

TEST(AProgram, IsItsWordsAndThenWhatItWrote) {
  EXPECT_EQ(Printed(Script(Kind::Run, "echo a")), "run echo a\n");
  EXPECT_EQ(Printed(Script(Kind::Output, "a\nb")), "output | a\noutput | b\n");
  EXPECT_EQ(Printed(Script(Kind::Output, "")), "");
}

TEST(APrintedLine, ShowsControlCharacters) {
  EXPECT_EQ(Printed(Script(Kind::Print, "a\tb")), "print a\\tb\n");
}

TEST(WhatFails, IsShownWithItsPlace) {
  EXPECT_EQ(Printed(Script(Kind::Error, "it broke")), "error a.devhost:7: it broke\n");
  ScriptOccurrence unmet = Script(Kind::Expect, "the reply is not as expected");
  unmet.details = {"expected: a", "found:    b"};
  EXPECT_EQ(Printed(unmet),
            "expect a.devhost:7: the reply is not as expected\nexpect   expected: a\nexpect   found:    b\n");
}

TEST(ATextWriter, HasFailedWhenItsOutputHas) {
  Output output(-1);
  TextWriter writer(output, TextStyle());
  EXPECT_FALSE(writer.Failed());
  writer.Report(ScriptOccurrence{Kind::Restart}, {});
  EXPECT_TRUE(writer.Failed());
}

}  // namespace
}  // namespace devhost

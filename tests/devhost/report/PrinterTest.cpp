#include "devhost/report/Printer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <string>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

// What a printer of that style prints for one occurrence.
std::string Printed(const Occurrence& occurrence, PrintStyle style = PrintStyle()) {
  const testsupport::ScratchFolder folder;
  const int file = ::open(folder.Path("out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  Output output(file);
  Printer(output, style).Print(occurrence, "a.devhost:7");
  ::close(file);
  return folder.Read("out");
}

Occurrence Make(Occurrence::Kind kind, const std::string& name, const std::string& text) {
  Occurrence occurrence{kind, 12, "kitchen", name, text};
  occurrence.level = 3;
  return occurrence;
}

PrintStyle Pretty() {
  return PrintStyle{true, false};
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

TEST(AnInvalidatedState, IsItsFirstWordAndDriver) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Invalidate, "", "")), "invalidate kitchen\n");
}

TEST(WhatMayHoldASecret, IsPrintedWithoutIt) {
  const std::string xml = "<a><community>hidden</community></a>";
  for (const auto& [kind, word] :
       {std::pair{Occurrence::Kind::Reply, "reply"}, std::pair{Occurrence::Kind::Notification, "notification"}}) {
    EXPECT_EQ(Printed(Make(kind, "", xml)), std::string(word) + " kitchen <a><community>*****</community></a>\n");
  }
  const std::string line = "rocommunity hidden";
  for (const Occurrence::Kind kind :
       {Occurrence::Kind::Log, Occurrence::Kind::Manners, Occurrence::Kind::Failure, Occurrence::Kind::StateProblem}) {
    EXPECT_THAT(Printed(Make(kind, "", line)),
                testing::AllOf(testing::HasSubstr("rocommunity *****"), testing::Not(testing::HasSubstr("hidden"))));
  }
}

TEST(WhatMayHoldASecret, IsHiddenInAnEventToo) {
  Occurrence event{Occurrence::Kind::Event, 0, "", "OnItemRemoved", ""};
  event.parameters = {{"community", "hidden"}};
  EXPECT_EQ(Printed(event), "event OnItemRemoved community=*****\n");
}

TEST(WhatMayHoldASecret, IsPrintedAsItIsOnRequest) {
  PrintStyle style;
  style.showSecrets = true;
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Log, "", "rocommunity hidden"), style), "log kitchen 3 rocommunity hidden\n");
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "", "<community>hidden</community>"), style),
            "reply kitchen <community>hidden</community>\n");
}

TEST(ALongReplyInPrettyStyle, IsMaskedBeforeItIsLaidOut) {
  const std::string fill(100, 'c');
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "", "<a><community>hidden</community><b>" + fill + "</b></a>"), Pretty()),
            "reply kitchen\n  <a>\n    <community>*****</community>\n    <b>" + fill + "</b>\n  </a>\n");
}

TEST(InColour, OnlyTheFirstWordIsColoured) {
  EXPECT_EQ(Printed(Make(Occurrence::Kind::Reply, "a", "<a/>"), PrintStyle{false, true}),
            "\x1b[1;32mreply\x1b[0m kitchen <a/>\n");
}

}  // namespace
}  // namespace devhost

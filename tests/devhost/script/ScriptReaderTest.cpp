#include "devhost/script/ScriptReader.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

#include "devhost/system/FileText.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

DriverNames Names() {
  return DriverNames({{1, "agent", "", ""}, {12, "kitchen", "", ""}});
}

Script Text(const std::string& text) {
  return Script{"a.devhost", ".", text};
}

std::string ErrorOf(const std::string& text) {
  try {
    CheckScript(Text(text), Names());
  } catch (const ScriptError& error) {
    return error.what();
  }
  return "";
}

TEST(AScript, IsLoadedWithItsFolder) {
  const testsupport::ScratchFolder folder;
  const std::string path = folder.Write("a.devhost",
                                        "\xef\xbb\xbf"
                                        "print a");
  const Script script = LoadScript(path);
  EXPECT_EQ(script.name, path);
  EXPECT_EQ(script.folder, folder.Path());
  EXPECT_EQ(script.text, "print a");
  EXPECT_THROW(LoadScript(folder.Path("none")), FileError);
}

TEST(AScript, IsReadLineByLineWithItsLineNumbers) {
  const Script script = Text("# head\n\nprint a\r\n  restart # b\nprint c");
  const DriverNames names = Names();
  ScriptReader reader(script, names);
  Action action;
  ASSERT_TRUE(reader.Next(action));
  EXPECT_EQ(std::get<PrintAction>(action).text, "a");
  EXPECT_EQ(reader.Place().text, "a.devhost:3");
  EXPECT_EQ(reader.Place().line, 3u);
  ASSERT_TRUE(reader.Next(action));
  EXPECT_TRUE(std::holds_alternative<RestartAction>(action));
  EXPECT_EQ(reader.Place().line, 4u);
  ASSERT_TRUE(reader.Next(action));
  EXPECT_EQ(reader.Place().line, 5u);
  EXPECT_FALSE(reader.Next(action));
}

TEST(AnEmptyScript, HasNoActions) {
  EXPECT_EQ(CheckScript(Text(""), Names()), 0u);
  EXPECT_EQ(CheckScript(Text("\n# x\n \n"), Names()), 0u);
}

TEST(AWrongLine, IsNamedWithItsNumberAndWhatIsAllowed) {
  EXPECT_EQ(ErrorOf("print a\n\ncomand x\nprint"),
            "a.devhost:3: unknown action; allowed: command, event, device, variable, user-variable, item, flag, "
            "load-project, show, restart, run, print, expect");
}

TEST(AScriptWithANulByte, IsRefused) {
  EXPECT_EQ(ErrorOf(std::string("print a\nprint \0b\n", 17)), "a.devhost:2: the line holds a NUL byte: a script is text");
}

TEST(AMessageAboutALongLine, IsShort) {
  EXPECT_LT(ErrorOf(std::string(1000000, 'x')).size(), 500u);
}

TEST(AWrongLine, IsNamedWithoutAnyOfItsWords) {
  const std::string noValue = "a.devhost:1: a parameter has no value: write NAME=VALUE, or NAME= for an empty one";
  EXPECT_EQ(ErrorOf("command SetSetting name=communityRead value=my SECRET"), noValue);
  EXPECT_EQ(ErrorOf("command SetSetting name=comunityRead \"value SECRET\""), noValue);
  EXPECT_EQ(ErrorOf("command SetSetting name=communityRead value"),
            "a.devhost:1: the parameter \"value\" has no value: write value=VALUE, or value= for an empty one");
  for (const char* const line :
       {"SECRET", "device kitchen SECRET", "device SECRET show file", "command X =SECRET", "command X SECRET=1 SECRET=2",
        "command X value=@SECRET", "event SECRET", "device kitchen fail CopyTo SECRET", "run 'snmpget -c SECRET'",
        "run true {address:SECRET}", "expect setting kitchen communityRead matches \"ab\\tcdSECRET(\"",
        "expect setting kitchen communityRead SECRET x", "expect setting kitchen communityRead matches SECRET x",
        "device kitchen set communityRead 'SECRET", "device kitchen set communityRead \"SECRET\\q\""}) {
    EXPECT_THAT(ErrorOf(line), testing::AllOf(StartsWith("a.devhost:1: "), testing::Not(HasSubstr("SECRET")))) << line;
  }
  EXPECT_THAT(ErrorOf("command X xml=@no/such"), HasSubstr("cannot read \"no/such\": "));
  EXPECT_EQ(ErrorOf(std::string("print 'community \0", 18)), "a.devhost:1: the line holds a NUL byte: a script is text");
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
  EXPECT_EQ(CheckScript(Text("print '" + std::string(5000000, 'x') + "'"), Names()), 1u);
  std::string words = "command X";
  for (int i = 0; i != 100000; ++i) {
    words += " p" + std::to_string(i) + "=1";
  }
  EXPECT_EQ(CheckScript(Text(words), Names()), 1u);
}

}  // namespace
}  // namespace devhost

#include "devhost/script/ScriptLine.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "devhost/script/ScriptActions.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A line of that form.
class Line {
 public:
  Line(const std::string& synopsis, const std::string& text)
      : m_synopsis(synopsis),
        m_action{m_synopsis.c_str(), "", "", nullptr},
        m_words(SplitWords(text)),
        m_form(m_synopsis, m_action) {}
  ScriptLine Get() const { return {m_words, m_form, folder.Path(), m_names}; }

  const testsupport::ScratchFolder folder;

 private:
  const std::string m_synopsis;
  const ActionForm m_action;
  const std::vector<std::string> m_words;
  const ScriptForm m_form;
  const DriverNames m_names{{{1, "agent", "", ""}, {12, "kitchen", "", ""}}};
};

template <class Call>
std::string ErrorOf(Call call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(ALine, KnowsItsWordsByTheNamesOfTheForm) {
  const Line given("put DRIVER NAME [TIMES]", "put kitchen 'a b'");
  const ScriptLine line = given.Get();
  EXPECT_TRUE(line.Has("NAME"));
  EXPECT_FALSE(line.Has("TIMES"));
  EXPECT_FALSE(line.Has("COLOUR"));
  EXPECT_EQ(line["NAME"], "a b");
  EXPECT_EQ(line.Driver(), 12ul);
}

TEST(ALine, GivesTheWordsFromOneOn) {
  const std::string synopsis = "run PROGRAM [WORD]...";
  EXPECT_THAT(Line(synopsis, "run a b c").Get().From("PROGRAM"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(Line(synopsis, "run a b c").Get().From("WORD"), ElementsAre("b", "c"));
  EXPECT_THAT(Line(synopsis, "run a").Get().From("WORD"), IsEmpty());
  EXPECT_THAT(Line(synopsis, "run a").Get().From("TEXT"), IsEmpty());
}

TEST(AnId, HasUpTo32Bits) {
  EXPECT_EQ(Line("put ID", "put 0").Get().Id("ID"), 0ul);
  EXPECT_EQ(Line("put ID", "put 4294967295").Get().Id("ID"), 4294967295ul);
  for (const char* wrong : {"4294967296", "-1", "1x", "''", "99999999999999999999", "+1", "0x1"}) {
    const Line line("put ID", std::string("put ") + wrong);
    EXPECT_EQ(ErrorOf([&] { line.Get().Id("ID"); }), "ID is wrong; allowed: a whole number from 0 to 4294967295");
  }
}

TEST(ANumber, LiesWithinItsBounds) {
  const auto read = [](const std::string& word) {
    return Line("put N", "put " + word).Get().Number("N", -2, 3, ", 0 for none");
  };
  EXPECT_EQ(read("-2"), -2);
  EXPECT_EQ(read("3"), 3);
  EXPECT_EQ(ErrorOf([&] { read("4"); }), "N is wrong; allowed: a whole number from -2 to 3, 0 for none");
  EXPECT_EQ(ErrorOf([&] { read("-3"); }), "N is wrong; allowed: a whole number from -2 to 3, 0 for none");
}

TEST(AName, IsNotAParameter) {
  EXPECT_EQ(Line("command NAME", "command GetX").Get().Name(), "GetX");
  for (const char* wrong : {"a=b", "''"}) {
    const Line line("command NAME", std::string("command ") + wrong);
    EXPECT_EQ(ErrorOf([&] { line.Get().Name(); }), "the command has no name; allowed: command NAME");
  }
}

std::vector<ScriptParameter> Parameters(const std::string& words) {
  return Line("send [PARAM=VALUE]...", "send " + words).Get().Parameters();
}

TEST(AParameter, IsItsNameAndItsValue) {
  const std::vector<ScriptParameter> parameters = Parameters("a=1 b= 'c d=e f' g== mail=@@home");
  ASSERT_EQ(parameters.size(), 5u);
  EXPECT_EQ(parameters[1].value, "");
  EXPECT_EQ(parameters[2].name, "c d");
  EXPECT_EQ(parameters[3].value, "=");
  EXPECT_EQ(parameters[4].value, "@home");
  EXPECT_FALSE(parameters[4].isFile);
}

TEST(AParameter, WithoutNameOrValueIsRefused) {
  EXPECT_EQ(ErrorOf([] { Parameters("deviceId"); }),
            "the parameter \"deviceId\" has no value: write deviceId=VALUE, or deviceId= for an empty one");
  EXPECT_EQ(ErrorOf([] { Parameters("=1"); }), "a parameter has no name: write NAME=VALUE");
}

TEST(AParameter, NamesAFileThatCanBeRead) {
  const Line line("send [PARAM=VALUE]...", "send xml=@x.xml");
  EXPECT_EQ(ErrorOf([&] { line.Get().Parameters(); }),
            "cannot read \"" + line.folder.Path("x.xml") + "\": No such file or directory");
  line.folder.Write("x.xml", "<a/>");
  const std::vector<ScriptParameter> parameters = line.Get().Parameters();
  EXPECT_TRUE(parameters.at(0).isFile);
  EXPECT_EQ(parameters.at(0).value, line.folder.Path("x.xml"));
  EXPECT_EQ(ErrorOf([] { Parameters("xml=@/"); }), "cannot read \"/\": Is a directory");
  // A value that was meant may be a secret.
  EXPECT_EQ(ErrorOf([] { Parameters("a=@/"); }), "cannot read the file of a parameter: Is a directory");
}

TEST(APath, IsReadableAsTheLineNeedsIt) {
  const Line line("send", "send");
  EXPECT_EQ(ErrorOf([&] { line.Get().Path("/dev/null", WhyUnreadable); }), "");
  EXPECT_EQ(ErrorOf([&] { line.Get().Path("/dev/null", WhyNoRegularFile); }),
            "cannot read \"/dev/null\": it is not a regular file");
}

}  // namespace
}  // namespace devhost

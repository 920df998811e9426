#include "devhost/script/ScriptForm.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "devhost/script/ScriptActions.h"
#include "devhost/text/Words.h"

namespace devhost {
namespace {

const std::vector<ActionForm>& SomeForms() {
  static const std::vector<ActionForm> kForms = {
      {"send NAME [PARAM]...", "", "", nullptr},     {"send to DRIVER NAME [PARAM]...", "", "", nullptr},
      {"put NAME [dark] [loud]", "", "", nullptr},   {"put off|on", "", "", nullptr},
      {"box DRIVER open", "", "", nullptr},          {"box DRIVER shut [TIMES]", "", "", nullptr},
      {"box DRIVER throw DISTANCE", "", "", nullptr}};
  return kForms;
}

std::vector<ScriptForm> Forms() {
  std::vector<ScriptForm> forms;
  for (const ActionForm& form : SomeForms()) {
    forms.emplace_back(form.synopsis, form);
  }
  return forms;
}

std::string SynopsisOf(const std::string& line) {
  const std::vector<ScriptForm> forms = Forms();
  return FindForm(forms, SplitWords(line)).Action().synopsis;
}

std::string ErrorOf(const std::string& line) {
  try {
    return "has the form " + SynopsisOf(line);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(AForm, IsFoundByItsOwnWords) {
  EXPECT_EQ(SynopsisOf("box a open"), "box DRIVER open");
  EXPECT_EQ(SynopsisOf("box open shut"), "box DRIVER shut [TIMES]");
  EXPECT_EQ(SynopsisOf("put on"), "put off|on");
}

TEST(AForm, WithAWordOfItsOwnIsPreferred) {
  EXPECT_EQ(SynopsisOf("send to a b"), "send to DRIVER NAME [PARAM]...");
  EXPECT_EQ(SynopsisOf("send a to b"), "send NAME [PARAM]...");
}

TEST(AWordInBrackets, MayBeMissing) {
  EXPECT_EQ(SynopsisOf("box a shut"), "box DRIVER shut [TIMES]");
  EXPECT_EQ(SynopsisOf("box a shut 3"), "box DRIVER shut [TIMES]");
}

TEST(AWordInBracketsWithDots, MayBeRepeated) {
  EXPECT_EQ(SynopsisOf("send a"), "send NAME [PARAM]...");
  EXPECT_EQ(SynopsisOf("send a b c d e f"), "send NAME [PARAM]...");
}

TEST(WordsInBracketsBehindEachOther, MayComeInAnyOrderButOnceEach) {
  EXPECT_EQ(SynopsisOf("put a loud dark"), "put NAME [dark] [loud]");
  EXPECT_EQ(SynopsisOf("put a loud"), "put NAME [dark] [loud]");
  EXPECT_EQ(ErrorOf("put a loud loud"),
            "\"put NAME dark|loud\" is followed by another word; allowed: put NAME [dark] [loud]");
  EXPECT_EQ(ErrorOf("put a loud dark loud"),
            "\"put NAME dark|loud dark|loud\" is followed by another word; allowed: put NAME [dark] [loud]");
}

TEST(APlace, IsFoundByItsTextAndByItsNumber) {
  const ScriptForm form("put NAME [dark] [loud]", SomeForms()[2]);
  EXPECT_EQ(form.Place(0), "put");
  EXPECT_EQ(form.Place(2), "dark|loud");
  EXPECT_EQ(form.Place(3), "dark|loud");
  EXPECT_EQ(ScriptForm("a B", SomeForms()[0]).Place(2), "");
  EXPECT_EQ(form.Find("NAME"), 1u);
  EXPECT_EQ(form.Find("TIMES"), ScriptForm::kNone);
}

TEST(AFirstWordThatNoFormHas, IsRefusedWithTheWordsThatThereAre) {
  EXPECT_EQ(ErrorOf("sned a"), "unknown action; allowed: send, put, box");
  EXPECT_EQ(ErrorOf("send|put a"), "unknown action; allowed: send, put, box");
}

TEST(AWordThatNoFormHas, IsRefusedWithTheWordsThatMayStandThere) {
  EXPECT_EQ(ErrorOf("box a jump"), "\"box DRIVER\" is followed by another word; allowed: box DRIVER open|shut|throw ...");
}

TEST(AWordThatIsMissing, IsNamedWithTheForm) {
  EXPECT_EQ(ErrorOf("box"), "\"box\" is followed by nothing; allowed: box DRIVER ...");
  EXPECT_EQ(ErrorOf("box a"), "\"box DRIVER\" is followed by nothing; allowed: box DRIVER open|shut|throw ...");
  EXPECT_EQ(ErrorOf("box a throw"), "\"box DRIVER throw\" is followed by nothing; allowed: box DRIVER throw DISTANCE");
  EXPECT_EQ(ErrorOf("send to a"), "\"send to DRIVER\" is followed by nothing; allowed: send to DRIVER NAME [PARAM]...");
}

TEST(WordsThatAreTooMany, AreCountedButNotShown) {
  EXPECT_EQ(ErrorOf("box a open secret"), "\"box DRIVER open\" is followed by 1 more word; allowed: box DRIVER open");
  EXPECT_EQ(
      ErrorOf("box a throw my secret far"),
      "\"box DRIVER throw DISTANCE\" is followed by 2 more words; allowed: box DRIVER throw DISTANCE (a text with blanks "
      "stands in quotes)");
}

}  // namespace
}  // namespace devhost

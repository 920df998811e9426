#include "devhost/snmpd/Directive.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Texts(std::string_view line) {
  std::vector<std::string> texts;
  const std::optional<Directive> directive = ReadDirective(line);
  if (directive) {
    texts.push_back(directive->keyword);
    for (const DirectiveWord& word : directive->words) {
      texts.push_back(word.text);
    }
  }
  return texts;
}

TEST(ADirective, IsAKeywordAndWordsBetweenBlanksOfAnyKind) {
  EXPECT_THAT(Texts("rocommunity public default"), ElementsAre("rocommunity", "public", "default"));
  EXPECT_THAT(Texts(" \trocommunity\t public\v\fdefault \r"), ElementsAre("rocommunity", "public", "default"));
  EXPECT_THAT(Texts("master"), ElementsAre("master"));
}

TEST(ADirective, HasItsKeywordInLowerCaseAndNothingElse) {
  EXPECT_THAT(Texts("roCommunity PubliC"), ElementsAre("rocommunity", "PubliC"));
}

TEST(ADirective, MayHaveItsKeywordInQuotesOrWithABackslash) {
  EXPECT_THAT(Texts("\"rocommunity\" public"), ElementsAre("rocommunity", "public"));
  EXPECT_THAT(Texts("'two words'x"), ElementsAre("two words", "x"));
  EXPECT_THAT(Texts("ro\\community public"), ElementsAre("rocommunity", "public"));
  EXPECT_THAT(Texts("\"rocommunity\"public"), ElementsAre("rocommunity", "public"));
  EXPECT_THAT(Texts("\""), ElementsAre(""));
  EXPECT_THAT(Texts("\\"), ElementsAre("\\"));
}

TEST(ADirective, MayStandBehindASection) {
  EXPECT_THAT(Texts("[snmp] defCommunity public"), ElementsAre("defcommunity", "public"));
  EXPECT_THAT(Texts("\"[snmp]\" defCommunity public"), ElementsAre("defcommunity", "public"));
  EXPECT_THAT(Texts("[snmp]\vdefCommunity public"), ElementsAre("defcommunity", "public"));
  EXPECT_THAT(Texts("[snmp]defCommunity public"), ElementsAre("[snmp]defcommunity", "public"));
  EXPECT_THAT(Texts("[ defCommunity public"), ElementsAre("[", "defCommunity", "public"));
}

TEST(ALineWithoutADirective, GivesNothing) {
  for (const char* const line : {"", " \t", "# rocommunity public", "  #x", "[snmp]", " [snmp] # x", "\r"}) {
    EXPECT_FALSE(ReadDirective(line)) << line;
  }
}

TEST(AWordOfADirective, IsTakenOutOfItsQuotes) {
  EXPECT_THAT(Texts("rocommunity \"my house\" 'a \"b\"' \"\""), ElementsAre("rocommunity", "my house", "a \"b\"", ""));
}

TEST(AWordOfADirective, EndsWithItsQuoteWhateverFollows) {
  EXPECT_THAT(Texts("rocommunity \"ab\"cd"), ElementsAre("rocommunity", "ab", "cd"));
}

TEST(AWordOfADirective, KeepsQuotesInsideIt) {
  EXPECT_THAT(Texts("rocommunity pub\"lic\" it's"), ElementsAre("rocommunity", "pub\"lic\"", "it's"));
}

TEST(AWordOfADirective, TakesTheCharacterBehindABackslashAsItIs) {
  EXPECT_THAT(Texts("com2sec c\\\\d\\ e\\f"), ElementsAre("com2sec", "c\\d ef"));
  EXPECT_THAT(Texts("com2sec \"a\\\"b\" c"), ElementsAre("com2sec", "a\"b", "c"));
  EXPECT_THAT(Texts("com2sec a\\"), ElementsAre("com2sec", "a\\"));
}

TEST(AWordOfADirective, GoesToTheEndWhenItsQuoteIsNeverClosed) {
  EXPECT_THAT(Texts("rocommunity \"my house "), ElementsAre("rocommunity", "my house "));
}

TEST(ANumberSign, EndsTheWordsInFrontOfAWordOnly) {
  EXPECT_THAT(Texts("rocommunity a#b #c d"), ElementsAre("rocommunity", "a#b"));
  EXPECT_THAT(Texts("rocommunity #secret"), ElementsAre("rocommunity"));
  EXPECT_EQ(ReadDirective("rocommunity #secret ")->rest, "#secret");
}

TEST(ADirective, KnowsWhereItsPartsAre) {
  const std::string line = "  [s] rocommunity  \"my house\"  a\\ b \r";
  const Directive directive = *ReadDirective(line);
  EXPECT_EQ(directive.rest, "\"my house\"  a\\ b");
  EXPECT_EQ(line.substr(directive.restBegin, directive.rest.size()), directive.rest);
  ASSERT_EQ(directive.words.size(), 2U);
  const DirectiveWord& quoted = directive.words[0];
  EXPECT_EQ(line.substr(quoted.begin, quoted.end - quoted.begin), "\"my house\"");
  EXPECT_EQ(quoted.quote, '"');
  const DirectiveWord& bare = directive.words[1];
  EXPECT_EQ(line.substr(bare.begin, bare.end - bare.begin), "a\\ b");
  EXPECT_EQ(bare.quote, '\0');
}

TEST(ADirectiveAlone, HasAnEmptyRestAtTheEnd) {
  const Directive directive = *ReadDirective("trap2sink  ");
  EXPECT_EQ(directive.rest, "");
  EXPECT_THAT(directive.words, IsEmpty());
}

}  // namespace
}  // namespace devhost

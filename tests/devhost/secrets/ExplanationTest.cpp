#include "devhost/secrets/Explanation.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "devhost/secrets/ConfigSecrets.h"

namespace devhost {
namespace {

std::string Explanation(const std::string& text) {
  return text.substr(0, LengthOfExplanation(text));
}

TEST(AnExplanation, EndsInFrontOfTheFirstWordThatIsNotPlain) {
  EXPECT_EQ(Explanation("two words x=1 more"), "two words ");
  EXPECT_EQ(Explanation("two words"), "two words");
  EXPECT_EQ(Explanation("word x=1"), "");
  EXPECT_EQ(Explanation("word"), "");
  EXPECT_EQ(Explanation("  "), "  ");
  EXPECT_EQ(Explanation(""), "");
}

TEST(AWordBesideASecret, IsKnownInCapitalsToo) {
  for (const char* const word : {"RO", "Secret", "authkey", "passcode", "Kennwort"}) {
    EXPECT_TRUE(TellsOfSecret(word)) << word;
  }
  for (const char* const word : {"row", "kitchen", ""}) {
    EXPECT_FALSE(TellsOfSecret(word)) << word;
  }
}

// How many comments a file holds; each must be shown whole.
int ShownComments(std::istream& file) {
  int comments = 0;
  for (std::string line; std::getline(file, line);) {
    if (IsComment(line)) {
      EXPECT_EQ(ShownLength(line), line.size()) << line;
      ++comments;
    }
  }
  return comments;
}

TEST(DebiansOwnComments, AreShown) {
  std::ifstream file("/etc/snmp/snmpd.conf");
  if (!file) {
    GTEST_SKIP() << "the package snmpd is not installed, or its file may not be read";
  }
  EXPECT_GT(ShownComments(file), 0);
}

TEST(TheCommentsOfTheManagedSection, AreShown) {
  std::ifstream file(SOURCE_FOLDER "/tests/data/config/full_section.conf");
  EXPECT_GT(ShownComments(file), 30);
}

}  // namespace
}  // namespace devhost

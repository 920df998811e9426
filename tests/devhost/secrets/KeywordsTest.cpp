#include "devhost/secrets/Keywords.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>

namespace devhost {
namespace {

TEST(AKeyword, IsKnownInCapitalsToo) {
  EXPECT_EQ(FindKeyword("sysLocation", Spelling::Exact), Keyword::Harmless);
  EXPECT_EQ(FindKeyword("SYSLOCATION", Spelling::Exact), Keyword::Harmless);
  EXPECT_EQ(FindKeyword("extend", Spelling::Exact), Keyword::Hidden);
  EXPECT_EQ(FindKeyword("RoCommunity6", Spelling::Exact), Keyword::Secret);
  EXPECT_EQ(FindKeyword("kitchen", Spelling::Exact), Keyword::Unknown);
  EXPECT_EQ(FindKeyword("", Spelling::Near), Keyword::Unknown);
}

TEST(AMisspeltKeyword, IsNearWhenOneLetterIsWrong) {
  for (const char* const name : {"rocomunity", "rocommmunity", "rocommanity", "rocommuntiy", "ocommunity", "rocommunit"}) {
    EXPECT_EQ(FindKeyword(name, Spelling::Exact), Keyword::Unknown) << name;
    EXPECT_EQ(FindKeyword(name, Spelling::Near), Keyword::Secret) << name;
  }
}

TEST(AMisspeltKeyword, IsNotNearWhenMoreIsWrongOrItIsShort) {
  for (const char* const name : {"rocomunty", "community", "communityro", "exce", "pas"}) {
    EXPECT_EQ(FindKeyword(name, Spelling::Near), Keyword::Unknown) << name;
  }
  EXPECT_EQ(FindKeyword(std::string(100000, 'r'), Spelling::Near), Keyword::Unknown);
}

TEST(AMisspeltKeyword, NearSeveralIsTheOneThatHidesMost) {
  // Of "interface" and nothing else; of "trapsink" as of "trap2sink".
  EXPECT_EQ(FindKeyword("interfaces", Spelling::Near), Keyword::Harmless);
  EXPECT_EQ(FindKeyword("trap1sink", Spelling::Near), Keyword::Secret);
}

TEST(AName, EndsAtWhatCannotStandInOne) {
  EXPECT_EQ(NameAt("pass_persist .1.3"), "pass_persist");
  EXPECT_EQ(NameAt("rocommunity6\xC2\xA0x"), "rocommunity6");
  EXPECT_EQ(NameAt(" x"), "");
  EXPECT_EQ(NameAt(""), "");
}

// The first words of what the daemon lists as its directives.
std::string DirectivesOfTheDaemon() {
  const std::unique_ptr<FILE, int (*)(FILE*)> output(::popen("PATH=$PATH:/usr/sbin:/sbin; snmpd -H 2>&1 | sed -n '/In "
                                                             "snmpd.conf/,/In snmp.conf/s/^    \\([a-zA-Z0-9_]*\\).*/\\1/p'",
                                                             "r"),
                                                     &::pclose);
  std::string text;
  std::array<char, 4096> part = {};
  while (output && std::fgets(part.data(), part.size(), output.get()) != nullptr) {
    text += part.data();
  }
  return text;
}

TEST(TheDirectivesOfTheDaemon, AreKnown) {
  const std::string names = DirectivesOfTheDaemon();
  if (names.empty()) {
    GTEST_SKIP() << "snmpd is not installed";
  }
  for (std::size_t at = 0; at < names.size();) {
    const std::string name = names.substr(at, names.find('\n', at) - at);
    at += name.size() + 1;
    // "at" is too ordinary a word for comments; of its lines nothing is shown.
    EXPECT_TRUE(name == "at" || FindKeyword(name, Spelling::Exact) != Keyword::Unknown) << name;
  }
}

}  // namespace
}  // namespace devhost

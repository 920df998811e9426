#include "devhost/snmpd/OwnWords.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(TheDaemonsOwnWords, AreShownWhereItQuotesNothing) {
  for (const char* const said : {"missing COMMUNITY parameter", "Should be yes|no|true|false|0|1",
                                 "sysobjectid token not a parsable OID:", "diskio path does not exist."}) {
    EXPECT_EQ(OwnWords(said), said);
  }
}

TEST(TheDaemonsOwnWords, AreShownUpToWhatItQuotes) {
  EXPECT_EQ(OwnWords("cannot create sink: two <words"), "cannot create sink: *****");
  EXPECT_EQ(OwnWords("Unknown token: hidden."), "Unknown token: *****");
  EXPECT_EQ(OwnWords("Blank line following hidden token."), "Blank line following *****");
  EXPECT_EQ(OwnWords("\tignoring:  hidden"), "ignoring: *****");
  EXPECT_EQ(OwnWords("ignoring extra tokens on line"), "ignoring extra tokens on line");
  EXPECT_EQ(OwnWords("missing COMMUNITY parameterhidden"), "missing COMMUNITY parameter *****");
}

TEST(TheDaemonsOwnWords, AreHiddenWhereTheyAreNotKnown) {
  EXPECT_EQ(OwnWords("hidden: cannot create sink"), "*****");
  EXPECT_EQ(OwnWords("time string hidden contains an invalid suffix letter"), "*****");
  EXPECT_EQ(OwnWords(""), "*****");
}

}  // namespace
}  // namespace devhost

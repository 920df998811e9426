#include "devhost/text/TypedText.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(AnUnsignedNumber, IsDecimalOfAtMost32BitsWithWhiteSpaceAround) {
  EXPECT_EQ(ReadULong("0"), 0U);
  EXPECT_EQ(ReadULong("007"), 7U);
  EXPECT_EQ(ReadULong(" \t\r\n12 \n"), 12U);
  EXPECT_EQ(ReadULong("4294967295"), 4294967295U);
}

TEST(AnUnsignedNumber, IsZeroForAnythingElse) {
  for (const char* text : {"", " ", "-1", "+1", "1 2", "0x10", "1.0", "1a", "4294967296", "99999999999999999999", "true"}) {
    EXPECT_EQ(ReadULong(text), 0U) << text;
  }
}

TEST(ABool, IsTrueFromTwoTextsOnly) {
  EXPECT_TRUE(ReadBool("true"));
  EXPECT_TRUE(ReadBool("1"));
  for (const char* text : {"", "True", "yes", "2", " 1", "true ", "0", "false"}) {
    EXPECT_FALSE(ReadBool(text)) << text;
  }
}

}  // namespace
}  // namespace devhost

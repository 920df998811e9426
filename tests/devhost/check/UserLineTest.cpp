// Users that a file makes. That the real daemon agrees is held in AccessAgreesTest.cpp.
#include "devhost/check/UserLine.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

UserLine Read(const std::string& operands) {
  return ReadUserLine(*ReadDirective("createUser  " + operands));
}

TEST(AUser, StandsBehindTheEngine) {
  EXPECT_EQ(Read("bob  SHA  passphrase").words.front(), "bob");
  const UserLine user = Read("-e  0x8000000001  bob  SHA  passphrase");
  EXPECT_EQ(user.words.front(), "bob");
  EXPECT_EQ(user.engine, "0x8000000001");
  EXPECT_TRUE(Read("-e").hasEngine);
  EXPECT_EQ(Read("-e").words.size(), 0U);
}

TEST(AUser, IsMadeFromPassphrasesAndKeys) {
  for (const char* const operands :
       {"bob", "bob  SHA  passphrase", "bob  sha-512  passphrase  AES-256", "bob  MD5  passphrase  DES  12345678",
        "bob  MD5  -l  0x00112233445566778899aabbccddeeff  AES  -l  0x00112233445566778899aabbccddeeff"}) {
    EXPECT_EQ(WhyNoUser(Read(operands)), "") << operands;
  }
}

TEST(AUser, IsNotMadeFromLess) {
  for (const char* const operands : {"bob  SHA", "bob  SHA  short", "bob  SHB  passphrase", "bob  SHA  passphrase  3DES",
                                     "bob  SHA  passphrase  AES  short", "bob  SHA  passphrase  AES-256", "bob  SHA  -m",
                                     "bob  SHA  -l  0x00", "-e  zz  bob", "-e"}) {
    EXPECT_NE(WhyNoUser(Read(operands)), "") << operands;
  }
}

TEST(ARowOfBytes, HasALength) {
  EXPECT_EQ(HexLength("0x0011"), 2U);
  EXPECT_EQ(HexLength("AABB"), 2U);
  EXPECT_EQ(HexLength("0x001"), 0U);
  EXPECT_EQ(HexLength("xyz"), 0U);
}

}  // namespace
}  // namespace devhost

#include "devhost/check/UserNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace devhost {
namespace {

using Mismatch = UserNames::Mismatch;

std::vector<UserNames::Found> Found(const std::vector<std::string>& lines) {
  UserNames names;
  for (std::size_t at = 0; at != lines.size(); ++at) {
    names.Add(*ReadDirective(lines[at]), at + 1);
  }
  return names.Mismatches();
}

void ExpectOne(const std::vector<std::string>& lines, std::size_t line, Mismatch what) {
  const std::vector<UserNames::Found> found = Found(lines);
  ASSERT_EQ(found.size(), 1U) << lines.front();
  EXPECT_EQ(found.front().line, line) << lines.front();
  EXPECT_EQ(found.front().what, what) << lines.front();
}

TEST(Users, DoNotFitTogether) {
  ExpectOne({"createUser bob SHA \"some words\"", "createUser bob"}, 2, Mismatch::Again);
  ExpectOne({"rwuser Bob", "createUser bob SHA \"some words\""}, 1, Mismatch::Case);
  ExpectOne({"createUser bob SHA -m 0x0123456789012345678901234567890123456789", "rouser bob authPriv"}, 2,
            Mismatch::NoPrivacy);
}

TEST(Users, FitTogether) {
  EXPECT_TRUE(Found({"rouser bob priv"}).empty()) << "made in the persistent folder";
  EXPECT_TRUE(Found({"createUser bob SHA \"some words\" AES", "rouser bob priv", "rouser bob"}).empty());
  EXPECT_TRUE(Found({"createUser Bob", "createUser bob", "rouser bob noauth", "rouser Bob noauth"}).empty());
  EXPECT_TRUE(Found({"createUser bob SHA short", "createUser bob"}).empty()) << "the daemon does not make the first";
  EXPECT_TRUE(Found({"createUser bob SHA \"some words\"", "createUser bob SHA \"some words\""}).empty()) << "the same line";
  EXPECT_TRUE(Found({"createUser -e 0x8000 bob", "createUser bob"}).empty()) << "users of two engines";
}

}  // namespace
}  // namespace devhost

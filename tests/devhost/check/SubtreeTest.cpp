// Parts of the tree of objects. That the real daemon agrees is held in AccessAgreesTest.cpp.
#include "devhost/check/Subtree.h"

#include <gtest/gtest.h>

#include <string>

namespace devhost {
namespace {

std::string Long(int count) {
  std::string text;
  for (int at = 0; at != count; ++at) {
    text += ".1";
  }
  return text;
}

TEST(ASubtree, IsARowOfNumbersPerhapsBelowARoot) {
  for (const std::string& text : {std::string(".1"), std::string("1.3.6."), std::string("iso.3"), std::string(".1.3.0x6"),
                                  std::string(".1.3.\"text\""), Long(128)}) {
    EXPECT_EQ(JudgeSubtree(text), Subtree::Good) << text;
  }
}

TEST(ASubtree, MayHaveANameThatOnlyAMibFileExplains) {
  for (const char* const text : {"system", ".iso.org", "SNMPv2-MIB::system", ".1.x"}) {
    EXPECT_EQ(JudgeSubtree(text), Subtree::Named) << text;
  }
}

TEST(ASubtree, IsWrongWhenItHasGapsOrIsTooLong) {
  for (const std::string& text : {std::string(), std::string("."), std::string("..1"), std::string(".1..3"),
                                  std::string(".1.-3"), std::string("#"), Long(129)}) {
    EXPECT_EQ(JudgeSubtree(text), Subtree::Wrong) << text;
  }
}

}  // namespace
}  // namespace devhost

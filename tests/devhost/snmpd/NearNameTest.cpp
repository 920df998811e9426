#include "devhost/snmpd/NearName.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

struct Spelt {
  const char* word;
  const char* name;
  std::size_t distance;
};

class AWord : public testing::TestWithParam<Spelt> {};

TEST_P(AWord, IsAsFarFromANameAsLettersAreWrong) {
  EXPECT_EQ(NearName(GetParam().word).DistanceTo(GetParam().name), GetParam().distance);
}

constexpr std::size_t kFar = NearName::kFar;

INSTANTIATE_TEST_SUITE_P(Misspelt, AWord,
                         testing::Values(Spelt{"rocommunity", "rocommunity", 0}, Spelt{"RoCommunity", "rocommunity", 0},
                                         Spelt{"rocomunity", "rocommunity", 1}, Spelt{"rocommmunity", "rocommunity", 1},
                                         Spelt{"rocommanity", "rocommunity", 1}, Spelt{"rocommuntiy", "rocommunity", 1},
                                         Spelt{"rocomunty", "rocommunity", 2}, Spelt{"r0c0mmunity", "rocommunity", 2},
                                         Spelt{"rcmmnity", "rocommunity", kFar}, Spelt{"", "rocommunity", kFar}));

INSTANTIATE_TEST_SUITE_P(Short, AWord,
                         testing::Values(Spelt{"vieew", "view", 1}, Spelt{"veiww", "view", kFar}, Spelt{"sh", "sh", 0},
                                         Spelt{"s", "sh", kFar}, Spelt{"", "sh", kFar}));

// Letters of Cyrillic, with accents, combining accents, of full width and of small capitals.
INSTANTIATE_TEST_SUITE_P(OtherLetters, AWord,
                         testing::Values(Spelt{"r\xD0\xBE\xD1\x81\xD0\xBEmmunit\xD1\x83", "rocommunity", 0},
                                         Spelt{"r\xC3\xB6\xC3\xA7\xC3\xB6mm\xC3\xBCnity", "rocommunity", 0},
                                         Spelt{"ro\xCC\x81"
                                               "co\xCC\x81"
                                               "mmu\xCC\x81nity",
                                               "rocommunity", 0},
                                         Spelt{"\xEF\xBD\x96\xEF\xBD\x89\xEF\xBD\x85\xEF\xBD\x97", "view", 0},
                                         Spelt{"\xE1\xB4\xA0\xC9\xAA\xE1\xB4\x87\xE1\xB4\xA1", "view", 0}));

INSTANTIATE_TEST_SUITE_P(OtherScripts, AWord,
                         testing::Values(Spelt{"\xD0\xBA\xD1\x83\xD1\x85\xD0\xBD\xD1\x8F", "table", kFar},
                                         Spelt{"\xE5\x8E\xA8\xE6\x88\xBF\xE5\x8E\xA8\xE6\x88\xBF", "view", kFar},
                                         Spelt{"K\xC3\xBC"
                                               "che",
                                               "rocommunity", kFar}));

TEST(AVeryLongWord, IsNearNothing) {
  EXPECT_EQ(NearName(std::string(100000, 'r')).DistanceTo("rocommunity"), kFar);
}

}  // namespace
}  // namespace devhost

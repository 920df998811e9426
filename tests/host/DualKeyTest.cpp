#include "host/DualKey.h"

#include <gtest/gtest.h>

namespace {

using Key = DualKey<unsigned long, unsigned long>;

TEST(ADualKey, IsOrderedByTheFirstPartThenTheSecondBothUnsigned) {
  EXPECT_TRUE(Key(1, 9) < Key(2, 0));
  EXPECT_FALSE(Key(2, 0) < Key(1, 9));
  EXPECT_TRUE(Key(1, 1) < Key(1, 2));
  EXPECT_FALSE(Key(1, 1) < Key(1, 1));
  EXPECT_TRUE(Key(5, 0) < Key(4294967295UL, 0));
  EXPECT_TRUE(Key(5, 5) < Key(5, 4294967295UL));
}

TEST(ADualKey, IsEqualInBothPartsOnly) {
  EXPECT_TRUE(Key(1, 2) == Key(1, 2));
  EXPECT_FALSE(Key(1, 2) == Key(1, 3));
  EXPECT_FALSE(Key(1, 2) == Key(0, 2));
  EXPECT_TRUE(Key() == Key(0, 0));
}

}  // namespace

#include "drivers/common/SnmpSettings.h"

#include <gtest/gtest.h>

namespace {

TEST(AnErasableText, SaysWhetherItHasChanged) {
  drivers::ErasableText text;
  EXPECT_FALSE(text.Set(""));
  EXPECT_TRUE(text.Set("kitchen"));
  EXPECT_FALSE(text.Set("kitchen"));
  EXPECT_TRUE(text.Set(""));
  EXPECT_FALSE(text.Set(""));
  EXPECT_TRUE(text.WasErased());
}

TEST(AnErasableText, CanBeErasedThoughItHeldNothing) {
  drivers::ErasableText text;
  text.Erase();
  EXPECT_TRUE(text.WasErased());
  EXPECT_FALSE(text.Set(""));
  EXPECT_TRUE(text.WasErased());
  EXPECT_TRUE(text.Set("kitchen"));
  EXPECT_FALSE(text.WasErased());
}

TEST(ErasableTrapTargets, HaveChangedWhenAnyTextOfOneDiffers) {
  drivers::ErasableTrapTargets targets;
  EXPECT_FALSE(targets.Set({}));
  EXPECT_TRUE(targets.Set({TrapTarget("h", "c", "162")}));
  EXPECT_FALSE(targets.Set({TrapTarget("h", "c", "162")}));
  EXPECT_TRUE(targets.Set({TrapTarget("x", "c", "162")}));
  EXPECT_TRUE(targets.Set({TrapTarget("x", "y", "162")}));
  EXPECT_TRUE(targets.Set({TrapTarget("x", "y", "z")}));
  EXPECT_TRUE(targets.Set({TrapTarget("x", "y", "z"), TrapTarget("x", "y", "z")}));
  EXPECT_TRUE(targets.Set({}));
  EXPECT_TRUE(targets.WasErased());
  targets.Add(TrapTarget("h", "", ""));
  EXPECT_FALSE(targets.WasErased());
  EXPECT_EQ(1U, targets.Get().size());
}

}  // namespace

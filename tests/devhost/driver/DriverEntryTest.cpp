#include "devhost/driver/DriverEntry.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(ADriver, IsNamedByItsIdAndName) {
  EXPECT_EQ(TitleOf({4294967295UL, "kitchen", "", ""}), "driver 4294967295 \"kitchen\"");
}

}  // namespace
}  // namespace devhost

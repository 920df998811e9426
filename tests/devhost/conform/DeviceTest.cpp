#include "devhost/conform/Device.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "devhost/conform/Bench.h"
#include "tests/devhost/conform/Conforming.h"

namespace devhost {
namespace {

TEST(TheSettings, AreTwelveOfWhichSixCanBeErased) {
  EXPECT_EQ(Settings().size(), 12U);
  EXPECT_EQ(std::count_if(Settings().begin(), Settings().end(),
                          [](const Setting& setting) { return setting.wasErased != nullptr; }),
            6);
}

TEST(TheSettings, ReadAsTheyWereSet) {
  const testsupport::ScratchFolder folder;
  Trial trial(SkeletonModule("none"), folder.Path(), {}, 7);
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    for (const Setting& setting : Settings()) {
      setting.set(device, setting.kind == Setting::Kind::Switch ? "true" : "a");
      EXPECT_EQ(trial.trail.Last(), setting.setter);
      EXPECT_EQ(setting.get(device), setting.kind == Setting::Kind::Switch ? "true"
                                     : setting.kind == Setting::Kind::Text ? "a"
                                                                           : "a|c|162\n");
    }
  });
}

TEST(AList, HasALineForEachTarget) {
  EXPECT_EQ(TextOf(std::vector<TrapTarget>{{"a", "b", "1"}, {"", "", ""}}), "a|b|1\n||\n");
}

}  // namespace
}  // namespace devhost

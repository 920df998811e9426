#include "devhost/conform/Trial.h"

#include <gtest/gtest.h>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

TEST(ATrail, NamesTheLastOperationInItsFile) {
  const testsupport::ScratchFolder folder;
  Trail trail(folder.Path("slot"));
  trail.Note("SetTrapTargetsSetting");
  trail.Note("CopyTo");
  EXPECT_EQ(trail.Last(), "CopyTo");
  const std::string text = folder.Read("slot");
  EXPECT_EQ(text.substr(0, text.find('\n')), "CopyTo");
}

TEST(ATrail, DoesWithoutAFile) {
  Trail trail("/nowhere/slot");
  trail.Note("CopyTo");
  EXPECT_EQ(trail.Last(), "CopyTo");
}

TEST(ATrial, HasTheSameRandomTextsForTheSameSeed) {
  const testsupport::ScratchFolder folder;
  Trial one("m.so", folder.Path(), {}, 5);
  Trial same("m.so", folder.Path(), {}, 5);
  Trial other("m.so", folder.Path(), {}, 6);
  const std::string text = one.RandomText();
  EXPECT_EQ(text.size(), 16U);
  EXPECT_EQ(same.RandomText(), text);
  EXPECT_NE(other.RandomText(), text);
  EXPECT_NE(one.RandomText(), text);
}

}  // namespace
}  // namespace devhost

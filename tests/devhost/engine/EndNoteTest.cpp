#include "devhost/engine/EndNote.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace devhost {
namespace {

const char kTitle[] = "driver 5 \"rude5\"";

TEST(AnEndNote, NamesTheCallThatIsUnderWay) {
  EXPECT_STREQ(EndNote::UnderWay(), "");
  {
    const EndNote note("command \"Exit\"", kTitle);
    EXPECT_STREQ(EndNote::UnderWay(), "command \"Exit\" of driver 5 \"rude5\"");
  }
  EXPECT_STREQ(EndNote::UnderWay(), "");
}

TEST(AnEndNote, NamesTheInnermostCall) {
  const EndNote outer("Initialize", "driver 1 \"agent\"");
  {
    const EndNote inner("AgentAvailable", kTitle);
    EXPECT_STREQ(EndNote::UnderWay(), "AgentAvailable of driver 5 \"rude5\"");
  }
  EXPECT_STREQ(EndNote::UnderWay(), "Initialize of driver 1 \"agent\"");
}

TEST(AnEndNote, KnowsItsThread) {
  EXPECT_FALSE(EndNote::IsOnThisThread());
  const EndNote note("creation", kTitle);
  EXPECT_TRUE(EndNote::IsOnThisThread());
  bool there = true;
  std::thread([&there] { there = EndNote::IsOnThisThread(); }).join();
  EXPECT_FALSE(there);
}

TEST(AnEndNote, KeepsTheDriverOfACommandWithALongName) {
  const EndNote note("command \"" + std::string(10000, 'x') + "\"", kTitle);
  EXPECT_THAT(EndNote::UnderWay(), testing::EndsWith("x of driver 5 \"rude5\""));
}

TEST(AnEndNote, StaysOnOneLine) {
  const EndNote note("command \"a\nb\"", kTitle);
  EXPECT_STREQ(EndNote::UnderWay(), "command \"a?b\" of driver 5 \"rude5\"");
}

TEST(AnEndNote, NamesTheDeepestCallThatItHoldsWhenCallsNestDeeper) {
  std::vector<std::unique_ptr<EndNote>> notes;
  notes.reserve(100);
  for (int i = 0; i != 100; ++i) {
    notes.push_back(std::make_unique<EndNote>("call " + std::to_string(i), kTitle));
  }
  EXPECT_STREQ(EndNote::UnderWay(), "call 63 of driver 5 \"rude5\"");
  while (!notes.empty()) {
    notes.pop_back();
  }
  EXPECT_STREQ(EndNote::UnderWay(), "");
}

}  // namespace
}  // namespace devhost

#include "reentry/WalkByKey.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

using Names = std::map<unsigned long, std::string>;

class AWalk : public testing::Test {
 protected:
  // Walks over `names`, calls `visit` for each entry, and returns the visited entries.
  std::vector<std::string> Visited(const std::function<void(unsigned long)>& visit) {
    std::vector<std::string> visited;
    WalkByKey(names, [&](unsigned long id, const std::string& name) {
      visit(id);
      visited.push_back(std::to_string(id) + name);
    });
    return visited;
  }

  Names names = {{3, "c"}, {1, "a"}, {2, "b"}};
};

TEST_F(AWalk, GoesInTheOrderOfTheKeys) {
  EXPECT_EQ(Visited([](unsigned long) {}), (std::vector<std::string>{"1a", "2b", "3c"}));
}

TEST_F(AWalk, OverNothingVisitsNothing) {
  names.clear();
  EXPECT_TRUE(Visited([](unsigned long) {}).empty());
}

TEST_F(AWalk, GivesAnEntryThatIsErasedMeanwhileInFull) {
  EXPECT_EQ(Visited([this](unsigned long id) { names.erase(id); }), (std::vector<std::string>{"1a", "2b", "3c"}));
  EXPECT_TRUE(names.empty());
}

TEST_F(AWalk, GivesAnEntryAsItWasWhenItsTurnCame) {
  EXPECT_EQ(Visited([this](unsigned long id) { names[id] = "changed"; }), (std::vector<std::string>{"1a", "2b", "3c"}));
}

TEST_F(AWalk, LeavesOutWhatIsErasedAhead) {
  EXPECT_EQ(Visited([this](unsigned long) { names.erase(2); }), (std::vector<std::string>{"1a", "3c"}));
}

TEST_F(AWalk, VisitsWhatIsAddedAheadAndNotWhatIsAddedBehind) {
  const auto add = [this](unsigned long id) {
    if (id == 2) {
      names[0] = "behind";
      names[9] = "ahead";
    }
  };
  EXPECT_EQ(Visited(add), (std::vector<std::string>{"1a", "2b", "3c", "9ahead"}));
}

TEST_F(AWalk, EndsWhenTheMapIsCleared) {
  EXPECT_EQ(Visited([this](unsigned long) { names.clear(); }), std::vector<std::string>{"1a"});
}

}  // namespace

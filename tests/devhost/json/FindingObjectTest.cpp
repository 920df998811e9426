#include "devhost/json/FindingObject.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace devhost {
namespace {

TEST(AFindingAsAnObject, HasAllThatItSaysInThatOrder) {
  const Finding finding{"a.conf", 7, Severity::Note, "some-rule", "a reason", "a remedy"};
  EXPECT_EQ(FindingObject(finding).dump(),
            R"({"file":"a.conf","line":7,"severity":"note","rule":"some-rule","reason":"a reason","remedy":"a remedy"})");
  EXPECT_EQ(FindingObjects({finding, finding}).size(), 2U);
  EXPECT_EQ(FindingObjects({}).dump(), "[]");
}

}  // namespace
}  // namespace devhost

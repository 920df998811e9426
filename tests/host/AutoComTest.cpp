#include <gtest/gtest.h>

#include <utility>

#include "host/auto_com.h"

namespace {

class Counted {
 public:
  void AddRef() const { ++references; }
  void Release() const { --references; }
  mutable int references = 1;
};

using Handle = h7::auto_com<Counted>;

TEST(AHandle, TakesTheReferenceOverAndReleasesItOnce) {
  Counted object;
  {
    const Handle handle(&object);
    EXPECT_EQ(object.references, 1);
    EXPECT_EQ(handle.Get(), &object);
    EXPECT_TRUE(handle);
  }
  EXPECT_EQ(object.references, 0);
}

TEST(AHandle, AddsAReferenceWhenItIsCopiedAndNoneWhenItIsMoved) {
  Counted object;
  Handle handle(&object);
  Handle copy(handle);
  EXPECT_EQ(object.references, 2);
  Handle moved(std::move(copy));
  EXPECT_EQ(object.references, 2);
  EXPECT_EQ(moved.Get(), &object);
  Handle assigned;
  assigned = moved;
  EXPECT_EQ(object.references, 3);
  assigned = std::move(moved);
  EXPECT_EQ(object.references, 2);
}

TEST(AHandle, ReleasesWhatItHeldWhenItIsAssignedResetOrReceivedInto) {
  Counted first;
  Counted second;
  Counted third;
  Handle handle(&first);
  handle = Handle(&second);
  EXPECT_EQ(first.references, 0);
  *handle.Receive() = &third;
  EXPECT_EQ(second.references, 0);
  EXPECT_EQ(handle.Get(), &third);
  handle.Reset();
  EXPECT_EQ(third.references, 0);
  EXPECT_FALSE(handle);
}

TEST(AHandle, SurvivesBeingAssignedToItself) {
  Counted object;
  Handle handle(&object);
  Handle& same = handle;
  handle = same;
  EXPECT_EQ(object.references, 1);
  EXPECT_EQ(handle.Get(), &object);
}

TEST(AHandle, IsEmptyAfterItWasCopiedFromAnEmptyOne) {
  Counted object;
  const Handle empty;
  const Handle copy(empty);
  EXPECT_FALSE(copy);
  Handle handle(&object);
  handle = empty;
  EXPECT_FALSE(handle);
  EXPECT_EQ(object.references, 0);
}

TEST(AHandle, GivesItsReferenceAway) {
  Counted object;
  Handle handle(&object);
  EXPECT_EQ(handle.Detach(), &object);
  EXPECT_FALSE(handle);
  EXPECT_EQ(object.references, 1);
}

}  // namespace

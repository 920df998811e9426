#include "devhost/console/EventRing.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(AnEvent, IsSentWithItsNumber) {
  EventRing ring;
  EXPECT_EQ(ring.NextNumber(), 1U);
  ring.Add("{\"a\":1}");
  ring.Add("{}");
  EXPECT_EQ(ring.After(0).bytes, "id: 1\ndata: {\"a\":1}\n\nid: 2\ndata: {}\n\n");
  EXPECT_EQ(ring.After(1).bytes, "id: 2\ndata: {}\n\n");
  EXPECT_EQ(ring.After(0).last, 2U);
}

TEST(AClientThatHasAll, GetsNothing) {
  EventRing ring;
  EXPECT_EQ(ring.After(0).bytes, "");
  EXPECT_FALSE(ring.After(0).hasMissed);
  ring.Add("{}");
  EXPECT_EQ(ring.After(1).bytes, "");
  EXPECT_EQ(ring.After(1).last, 1U);
  EXPECT_FALSE(ring.After(1).hasMissed);
}

TEST(ARingThatIsFull, KeepsTheLast1024Events) {
  EventRing ring;
  for (int i = 0; i < 1030; ++i) {
    ring.Add("{}");
  }
  EXPECT_FALSE(ring.After(6).hasMissed);
  EXPECT_THAT(ring.After(6).bytes, StartsWith("id: 7\n"));
  EXPECT_TRUE(ring.After(5).hasMissed);
  EXPECT_THAT(ring.After(5).bytes, StartsWith("id: 7\n"));
}

TEST(ARingThatIsFull, KeepsAtMostAMegabyte) {
  EventRing ring;
  const std::string event(100'000, 'x');
  for (int i = 0; i < 20; ++i) {
    ring.Add(event);
  }
  EXPECT_TRUE(ring.After(9).hasMissed);
  EXPECT_FALSE(ring.After(10).hasMissed);
}

TEST(ARing, KeepsAnEventThatAloneIsTooLarge) {
  EventRing ring;
  ring.Add(std::string(2'000'000, 'x'));
  EXPECT_EQ(ring.After(0).last, 1U);
}

TEST(AClientOfAnotherConsole, HasMissedEvents) {
  EventRing ring;
  ring.Add("{}");
  EXPECT_TRUE(ring.After(500).hasMissed);
  EXPECT_THAT(ring.After(500).bytes, HasSubstr("id: 1\n"));
  EXPECT_TRUE(ring.After(UINT64_MAX).hasMissed);
}

TEST(AClientThatIsFarBehind, GetsTheEventsInPieces) {
  EventRing ring;
  for (int i = 0; i < 100; ++i) {
    ring.Add(std::string(2000, 'x'));
  }
  std::uint64_t position = 0;
  int batches = 0;
  while (position < 100) {
    const EventRing::Batch batch = ring.After(position);
    EXPECT_LT(batch.bytes.size(), 70'000U);
    EXPECT_FALSE(batch.hasMissed);
    position = batch.last;
    ++batches;
  }
  EXPECT_GT(batches, 2);
}

}  // namespace
}  // namespace devhost

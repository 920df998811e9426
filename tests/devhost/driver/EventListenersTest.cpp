#include "devhost/driver/EventListeners.h"

#include <gmock/gmock.h>

#include "host/ISystemEventCallback.h"
#include "host/SystemEventId.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Listener : public ISystemEventCallback {
 public:
  virtual ~Listener() = default;
  void OnSystemEvent(H7XML::INode&) override {}
};

class Listeners : public testing::Test {
 protected:
  std::vector<const ISystemEventCallback*> Deliver(unsigned int eventId) {
    std::vector<const ISystemEventCallback*> heard;
    listeners.Deliver(eventId, [&](const EventListeners::Registration& registration) {
      heard.push_back(registration.listener);
      if (onDelivery) {
        onDelivery(registration);
      }
    });
    return heard;
  }

  EventListeners listeners;
  Listener a;
  Listener b;
  std::function<void(const EventListeners::Registration&)> onDelivery;
};

TEST_F(Listeners, AreCalledInOrderOfRegistrationForTheirIdOnly) {
  listeners.Add(2, b, 5, 0);
  listeners.Add(1, a, 5, 0);
  listeners.Add(1, a, 11, 0);
  EXPECT_THAT(Deliver(5), ElementsAre(&b, &a));
  EXPECT_THAT(Deliver(11), ElementsAre(&a));
  EXPECT_THAT(Deliver(34), IsEmpty());
}

TEST_F(Listeners, AreRemovedWithTheSameArgumentsOnly) {
  listeners.Add(1, a, 5, 0);
  listeners.Remove(1, a, 11, 0);
  listeners.Remove(1, a, 5, 1);
  listeners.Remove(1, b, 5, 0);
  listeners.Remove(2, a, 5, 0);
  EXPECT_THAT(Deliver(5), ElementsAre(&a));
  listeners.Remove(1, a, 5, 0);
  EXPECT_THAT(Deliver(5), IsEmpty());
}

TEST_F(Listeners, AreNotCalledOnceRemovedDuringTheDelivery) {
  listeners.Add(1, a, 5, 0);
  listeners.Add(1, b, 5, 0);
  onDelivery = [&](const EventListeners::Registration&) { listeners.RemoveAll(1); };
  EXPECT_THAT(Deliver(5), ElementsAre(&a));
}

TEST_F(Listeners, AreNotCalledYetWhenAddedDuringTheDelivery) {
  listeners.Add(1, a, 5, 0);
  onDelivery = [&](const EventListeners::Registration&) { listeners.Add(1, b, 5, 0); };
  EXPECT_THAT(Deliver(5), ElementsAre(&a));
}

TEST_F(Listeners, MayRemoveAndAddThemselvesAgainWhileTheyAreCalled) {
  listeners.Add(1, a, 5, 0);
  listeners.Add(1, b, 5, 0);
  onDelivery = [&](const EventListeners::Registration& registration) {
    ISystemEventCallback& listener = *registration.listener;
    listeners.Remove(1, listener, 5, 0);
    listeners.Add(1, listener, 5, 0);
  };
  EXPECT_THAT(Deliver(5), ElementsAre(&a, &b));
}

TEST_F(Listeners, AreGivenBackWhenAllOfADriverAreRemoved) {
  listeners.Add(1, a, 5, 0);
  listeners.Add(2, a, 5, 0);
  listeners.Add(1, b, 11, 0);
  const std::vector<EventListeners::Registration> removed = listeners.RemoveAll(1);
  ASSERT_EQ(removed.size(), 2U);
  EXPECT_EQ(removed[0].eventId, 5U);
  EXPECT_EQ(removed[1].eventId, 11U);
  EXPECT_THAT(Deliver(5), ElementsAre(&a));
}

TEST(SystemEvents, AreKnownByName) {
  EXPECT_EQ(SystemEventIdOf("OnProjectLoaded"), 5U);
  EXPECT_EQ(SystemEventIdOf("OnItemRemoved"), 11U);
  EXPECT_EQ(SystemEventIdOf("OnVariableAdded"), 34U);
  EXPECT_EQ(SystemEventIdOf("OnVariableRemoved"), 35U);
  EXPECT_EQ(SystemEventIdOf("OnUserVariableAdded"), 36U);
  EXPECT_EQ(SystemEventIdOf("onprojectloaded"), 0U);
}

}  // namespace
}  // namespace devhost

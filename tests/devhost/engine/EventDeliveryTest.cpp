#include "devhost/engine/EventDelivery.h"

#include "tests/devhost/support/HostFixture.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::ElementsAre;

class AnEvent : public HostFixture {
 protected:
  void LoadGreeter(unsigned long id, const std::string& greeting) {
    Load(id, "well_behaved", "<config greeting='" + greeting + "'/>");
  }
};

TEST_F(AnEvent, ComesToTheListenersOfItsIdInOrderOfRegistration) {
  LoadGreeter(7, "hi");
  LoadGreeter(3, "ho");
  observer.all.clear();
  host.SendEvent("OnItemRemoved", {{"iditem", "5"}, {"idroom", "0"}});
  host.SendEvent("OnVariableAdded", {});
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Event, Kind::Notification, Kind::Notification, Kind::Event));
  EXPECT_EQ(observer.all[0].name, "OnItemRemoved");
  EXPECT_EQ(observer.all[0].parameters, (Parameters{{"iditem", "5"}, {"idroom", "0"}}));
  EXPECT_EQ(observer.all[1].text, "<Heard>OnItemRemoved iditem:5 idroom:0</Heard>");
  EXPECT_EQ(observer.all[1].driverId, 7U);
  EXPECT_EQ(observer.all[2].text, "<Heard>OnItemRemoved iditem:5 idroom:0</Heard>");
  EXPECT_EQ(observer.all[2].driverId, 3U);
}

TEST_F(AnEvent, DoesNotComeToAListenerThatIsUnregisteredDuringTheDelivery) {
  LoadGreeter(7, "hi");
  LoadGreeter(3, "ho");
  observer.all.clear();
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Heard" && occurrence.driverId == 7) {
      host.Command(3, "StopListening", {});
    }
  };
  host.SendEvent("OnProjectLoaded", {});
  EXPECT_THAT(observer.Texts(Kind::Notification), ElementsAre("<Heard>OnProjectLoaded</Heard>"));
}

TEST_F(AnEvent, DoesNotComeToAListenerThatIsAddedDuringTheDelivery) {
  LoadGreeter(7, "hi");
  observer.all.clear();
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Heard" && host.Drivers().size() == 1) {
      LoadGreeter(9, "late");
    }
  };
  host.SendEvent("OnProjectLoaded", {});
  EXPECT_THAT(observer.Texts(Kind::Notification), ElementsAre("<Heard>OnProjectLoaded</Heard>", "<Hello>late</Hello>"));
  observer.then = nullptr;
}

TEST_F(AnEvent, ComesToAllListenersBeforeTheFirstExceptionIsThrown) {
  Load(5, "rude");
  host.Command(5, "Listen", {});
  LoadGreeter(7, "hi");
  observer.all.clear();
  EXPECT_EQ(ErrorOf([&] { host.SendEvent("OnProjectLoaded", {}); }),
            "an exception came out of event \"OnProjectLoaded\" of driver 5 \"rude5\": not listening");
  EXPECT_THAT(observer.Texts(Kind::Notification), ElementsAre("<Heard>OnProjectLoaded</Heard>"));
}

TEST_F(AnEvent, EndsInTheFirstOfSeveralExceptions) {
  for (const unsigned long id : {5UL, 6UL}) {
    Load(id, "rude");
    host.Command(id, "Listen", {});
  }
  EXPECT_EQ(ErrorOf([&] { host.LoadProject(); }),
            "an exception came out of event \"OnProjectLoaded\" of driver 5 \"rude5\": not listening");
}

}  // namespace
}  // namespace devhost

// When the host asks drivers for their states, keeps them and hands them out.
#include "devhost/engine/StateKeeper.h"

#include <gmock/gmock.h>

#include <string>

#include "devhost/engine/Host.h"
#include "devhost/state/StateFolder.h"
#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "tests/devhost/support/RecordingObserver.h"
#include "tests/devhost/support/TestModules.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Keeps states in memory and counts.
class CountingStore : public StateMemory {
 public:
  void Save(unsigned long driverId, const std::string& xml) override {
    ++saves;
    if (broken) {
      throw StateError("no room");
    }
    StateMemory::Save(driverId, xml);
  }
  std::string Text(unsigned long driverId) {
    const h7::auto_com<H7XML::INode> state = Load(driverId);
    return state ? XmlText(*state, XmlStyle::Compact) : "";
  }
  bool TakesStates() const override { return takes; }
  int saves = 0;
  bool broken = false;
  bool takes = true;
};

class AKeptState : public testing::Test {
 protected:
  static void LoadKeeper(Host& host, unsigned long id, const std::string& config = "<config/>") {
    host.Load(TestDriver(id, "keeper", config));
  }
  static std::string Set(Host& host, const std::string& text, const std::string& times) {
    return host.Command(7, "Set", {{"text", text}, {"times", times}});
  }
  void TearDown() override {
    EXPECT_THAT(observer.Texts(Kind::Manners), IsEmpty());
    EXPECT_EQ(LiveXmlObjects(), liveAtStart);
  }

  const std::size_t liveAtStart = LiveXmlObjects();
  RecordingObserver observer;
  CountingStore store;
};

TEST_F(AKeptState, IsAskedForOnceAfterTheCallInWhichItChanged) {
  Host host(observer, &store);
  LoadKeeper(host, 7);
  EXPECT_EQ(Set(host, "a", "3"), "<Asked>0</Asked>");
  EXPECT_EQ(store.Text(7), "<State>a</State>");
  EXPECT_EQ(store.saves, 1);
  EXPECT_EQ(host.Command(7, "Asked", {}), "<Asked>1</Asked>");
  EXPECT_EQ(store.saves, 1);
}

TEST_F(AKeptState, WaitsForTheOutermostCall) {
  Host host(observer, &store);
  LoadKeeper(host, 7);
  LoadKeeper(host, 8);
  int savesInside = -1;
  // The observer calls in while the first command is under way.
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.kind == Kind::Reply && occurrence.driverId == 8) {
      Set(host, "inner", "1");
      savesInside = store.saves;
    }
  };
  host.Command(8, "Asked", {});
  observer.then = nullptr;
  EXPECT_EQ(savesInside, 0);
  EXPECT_EQ(store.saves, 1);
  EXPECT_EQ(store.Text(7), "<State>inner</State>");
}

TEST_F(AKeptState, ThatChangesWhileItIsGivenIsNotAskedForForEver) {
  Host host(observer, &store);
  LoadKeeper(host, 7, "<config askAgain='true'/>");
  Set(host, "a", "1");
  EXPECT_EQ(store.saves, 1);
  host.Command(7, "Asked", {});
  EXPECT_EQ(store.saves, 2);
}

TEST_F(AKeptState, IsAskedForBeforeACleanStopWhetherItChangedOrNot) {
  Host host(observer, &store);
  LoadKeeper(host, 7);
  Set(host, "a", "0");
  EXPECT_EQ(store.saves, 0);
  host.Stop();
  EXPECT_EQ(store.saves, 1);
  EXPECT_EQ(store.Text(7), "<State>a</State>");
}

TEST_F(AKeptState, IsNotAskedForWhenTheHostIsDestroyedWithoutAStop) {
  {
    Host host(observer, &store);
    LoadKeeper(host, 7);
  }
  EXPECT_EQ(store.saves, 0);
}

TEST_F(AKeptState, IsForgottenWhenTheDriverGivesNone) {
  Host host(observer, &store);
  LoadKeeper(host, 7);
  Set(host, "a", "1");
  Set(host, "", "1");
  EXPECT_EQ(store.Text(7), "");
}

TEST_F(AKeptState, IsHandedToTheNextLifeOfTheSameDriver) {
  {
    Host host(observer, &store);
    LoadKeeper(host, 7);
    EXPECT_EQ(host.Command(7, "Began", {}), "<Began>nothing</Began>");
    Set(host, "a < b", "1");
  }
  Host host(observer, &store);
  LoadKeeper(host, 8);
  LoadKeeper(host, 7);
  EXPECT_EQ(host.Command(8, "Began", {}), "<Began>nothing</Began>");
  EXPECT_EQ(host.Command(7, "Began", {}), "<Began>State:a &lt; b</Began>");
}

TEST_F(AKeptState, IsNotReplacedBeforeTheProjectHasLoaded) {
  store.Save(7, "<State>old</State>");
  store.saves = 0;
  Host host(observer, &store);
  LoadKeeper(host, 7);
  LoadKeeper(host, 8);
  Set(host, "early", "1");
  EXPECT_EQ(store.saves, 0);
  // A driver that was handed nothing has nothing to lose.
  host.Command(8, "Set", {{"text", "b"}, {"times", "1"}});
  EXPECT_EQ(store.saves, 1);
  EXPECT_EQ(store.Text(7), "<State>old</State>");
  host.LoadProject();  // what is out of date since before is asked for now
  EXPECT_EQ(store.Text(7), "<State>early</State>");
}

TEST_F(AKeptState, OfADriverThatDoesNotListenToProjectLoadsIsReplacedWithoutOne) {
  store.Save(7, "<State>old</State>");
  Host host(observer, &store);
  LoadKeeper(host, 7, "<config deaf='true'/>");
  Set(host, "early", "1");
  EXPECT_EQ(store.Text(7), "<State>early</State>");
  Set(host, "late", "0");
  host.Stop();
  EXPECT_EQ(store.Text(7), "<State>late</State>");
}

TEST_F(AKeptState, IsLeftAsItWasByALifeWithoutAProjectLoad) {
  store.Save(7, "<State>old</State>");
  {
    Host host(observer, &store);
    LoadKeeper(host, 7);
    Set(host, "early", "1");
    host.Stop();
  }
  EXPECT_EQ(store.Text(7), "<State>old</State>");
}

TEST_F(AKeptState, IsNotReplacedAfterAProjectLoadThatFailed) {
  store.Save(7, "<State>old</State>");
  Host host(observer, &store);
  LoadKeeper(host, 7);
  host.Command(7, "ThrowOn", {{"event", "OnProjectLoaded"}});
  EXPECT_THROW(host.LoadProject(), HostError);
  Set(host, "half", "1");
  EXPECT_EQ(store.Text(7), "<State>old</State>");
}

TEST_F(AKeptState, IsNotReplacedAfterALaterProjectLoadThatFailed) {
  store.Save(7, "<State>old</State>");
  Host host(observer, &store);
  LoadKeeper(host, 7);
  host.LoadProject();
  Set(host, "good", "1");
  host.Command(7, "ThrowOn", {{"event", "OnProjectLoaded"}});
  EXPECT_THROW(host.LoadProject(), HostError);
  Set(host, "half", "1");
  host.Stop();
  EXPECT_EQ(store.Text(7), "<State>good</State>");
}

TEST_F(AKeptState, OfADriverThatBeganWithNoneIsNotReplacedAfterAProjectLoadThatFailed) {
  Host host(observer, &store);
  LoadKeeper(host, 7);
  Set(host, "good", "1");
  host.Command(7, "ThrowOn", {{"event", "OnProjectLoaded"}});
  EXPECT_THROW(host.LoadProject(), HostError);
  Set(host, "half", "1");
  EXPECT_EQ(store.Text(7), "<State>good</State>");
  host.Command(7, "ThrowOn", {{"event", ""}});
  host.LoadProject();  // what is out of date since before is asked for now
  EXPECT_EQ(store.Text(7), "<State>half</State>");
}

TEST_F(AKeptState, IsKeptWhenAnotherDriverFailedInTheProjectLoad) {
  store.Save(7, "<State>old</State>");
  store.Save(8, "<State>old</State>");
  Host host(observer, &store);
  LoadKeeper(host, 7);
  LoadKeeper(host, 8);
  host.Command(8, "ThrowOn", {{"event", "OnProjectLoaded"}});
  EXPECT_THROW(host.LoadProject(), HostError);
  Set(host, "new", "0");
  host.Command(8, "Set", {{"text", "half"}, {"times", "1"}});
  host.Stop();
  EXPECT_EQ(store.Text(7), "<State>new</State>");
  EXPECT_EQ(store.Text(8), "<State>old</State>");
}

TEST_F(AKeptState, ThatCouldNotBeKeptIsAskedForAgainAfterTheNextCall) {
  Host host(observer, &store);
  LoadKeeper(host, 7);
  store.broken = true;
  Set(host, "a", "1");
  store.broken = false;
  EXPECT_EQ(store.Text(7), "");
  host.Command(7, "Began", {});
  EXPECT_EQ(store.Text(7), "<State>a</State>");
  host.Command(7, "Began", {});
  EXPECT_EQ(store.saves, 2);
  EXPECT_THAT(observer.Texts(Kind::StateProblem), ElementsAre("no room"));
}

TEST_F(AKeptState, StaysWhenTheDriverThrowsInsteadOfGivingANewOne) {
  Host host(observer, &store);
  LoadKeeper(host, 7);
  Set(host, "a", "1");
  Set(host, "throw", "1");
  EXPECT_EQ(store.Text(7), "<State>a</State>");
  EXPECT_THAT(
      observer.Texts(Kind::StateProblem),
      ElementsAre(
          "an exception came out of GetPersistState of driver 7 \"keeper7\": no state today; the state is not kept"));
}

TEST_F(AKeptState, OfAStoreThatTakesNoneIsHandedOutButNeverAskedFor) {
  store.StateMemory::Save(7, "<State>old</State>");
  store.takes = false;
  Host host(observer, &store);
  LoadKeeper(host, 7, "<config deaf='true'/>");
  EXPECT_EQ(host.Command(7, "Began", {}), "<Began>State:old</Began>");
  EXPECT_EQ(Set(host, "a", "3"), "<Asked>0</Asked>");
  EXPECT_EQ(host.Command(7, "Asked", {}), "<Asked>0</Asked>");
  host.Stop();
  EXPECT_EQ(store.saves, 0);
  EXPECT_EQ(store.Text(7), "<State>old</State>");
}

TEST_F(AKeptState, IsAskedForButNotKeptByGetPersistState) {
  Host host(observer, &store);
  LoadKeeper(host, 7, "<config text='x'/>");
  EXPECT_EQ(host.GetPersistState(7, XmlStyle::Compact), "<State>x</State>");
  EXPECT_EQ(store.saves, 0);
}

TEST_F(AKeptState, IsNobodysBusinessWithoutAStore) {
  Host host(observer);
  LoadKeeper(host, 7);
  Set(host, "a", "1");
  EXPECT_EQ(host.Command(7, "Asked", {}), "<Asked>0</Asked>");
}

TEST_F(AKeptState, ThatIsDamagedOnDiskIsReportedAndTheDriverStartsWithNone) {
  const testsupport::ScratchFolder folder;
  folder.Write("driver-7.xml", "<State>\n<a></State>");
  StateFolder states(folder.Path());
  Host host(observer, &states);
  LoadKeeper(host, 7);
  EXPECT_EQ(host.Command(7, "Began", {}), "<Began>nothing</Began>");
  ASSERT_EQ(observer.Texts(Kind::StateProblem).size(), 1U);
  EXPECT_THAT(observer.Texts(Kind::StateProblem)[0],
              testing::AllOf(testing::StartsWith(folder.Path("driver-7.xml:2:")), HasSubstr("the state is damaged: "),
                             testing::EndsWith("; kept as driver-7.xml.damaged")));
  host.Stop();
}

TEST_F(AKeptState, ThatCannotBeWrittenIsReportedAndTheOldOneIsWhole) {
  const testsupport::ScratchFolder folder;
  StateFolder states(folder.Path());
  Host host(observer, &states);
  LoadKeeper(host, 7);
  Set(host, "a", "1");
  folder.Write("driver-7.xml.new/x", "");
  Set(host, "b", "1");
  EXPECT_THAT(observer.Texts(Kind::StateProblem),
              ElementsAre(folder.Path("driver-7.xml") +
                          ": the state is not kept: an old driver-7.xml.new cannot be removed: Is a directory"));
  EXPECT_EQ(folder.Read("driver-7.xml"), "<State>a</State>\n");
  std::filesystem::remove_all(folder.Path("driver-7.xml.new"));
  host.Stop();
  EXPECT_EQ(folder.Read("driver-7.xml"), "<State>b</State>\n");
}

}  // namespace
}  // namespace devhost

#include "devhost/engine/Host.h"

#include <cstdint>
#include <functional>
#include <thread>

#include "tests/devhost/support/HostFixture.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AHost : public HostFixture {
 protected:
  void LoadGreeter(unsigned long id, const std::string& greeting) {
    Load(id, "well_behaved", "<config greeting='" + greeting + "'/>");
  }

  void TearDown() override {
    HostFixture::TearDown();
    EXPECT_EQ(Reports().size(), expectedReports);
  }

  std::size_t expectedReports = 0;
};

TEST_F(AHost, LoadsInitialisesAndTellsSo) {
  LoadGreeter(7, "hi");
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Notification, Kind::Load));
  EXPECT_EQ(observer.all[0].name, "Hello");
  EXPECT_EQ(observer.all[0].text, "<Hello>hi</Hello>");
  EXPECT_EQ(observer.all[1].driverId, 7U);
  EXPECT_EQ(observer.all[1].driverName, "well_behaved7");
  EXPECT_EQ(observer.all[1].text, TestModule("well_behaved"));
  EXPECT_EQ(host.Drivers().size(), 1U);
}

TEST_F(AHost, BringsACommandAndItsReply) {
  LoadGreeter(7, "hi");
  observer.all.clear();
  EXPECT_EQ(host.Command(7, "Echo", {{"text", "a b"}, {"number", " 12 "}}),
            "<Echo><text>a b</text><number>12</number><has>yes</has></Echo>");
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Command, Kind::Reply));
  EXPECT_EQ(observer.all[0].name, "Echo");
  EXPECT_EQ(observer.all[0].driverId, 7U);
  EXPECT_EQ(observer.all[0].parameters, (Parameters{{"text", "a b"}, {"number", " 12 "}}));
  EXPECT_EQ(observer.all[1].name, "Echo");
}

TEST_F(AHost, RestsWhileAnotherOneLivesInsideIt) {
  LoadGreeter(7, "hi");
  RecordingObserver other;
  {
    Host inside(other, host);
    inside.Load(TestDriver(7, "well_behaved", "<config greeting='inside'/>"));
    EXPECT_EQ(inside.Drivers().size(), 1U);
    EXPECT_THAT(inside.Command(7, "Echo", {{"text", "a"}}), HasSubstr("<text>a</text>"));
    const std::string rests = "the host rests while another one lives inside it";
    EXPECT_EQ(ErrorOf([&] { host.Command(7, "Echo", {{"text", "a"}}); }), rests);
    EXPECT_EQ(ErrorOf([&] { host.Unload(7); }), rests);
    EXPECT_EQ(ErrorOf([&] { host.Stop(); }), rests);
    EXPECT_EQ(ErrorOf([&] { const Host second(other, host); }), rests);
    const Host innermost(other, inside);
  }
  EXPECT_THAT(host.Command(7, "Echo", {{"text", "b"}}), HasSubstr("<text>b</text>"));
  EXPECT_EQ(observer.Texts(Kind::Load).size(), 1U);
  EXPECT_EQ(other.Texts(Kind::Load).size(), 1U);
}

TEST_F(AHost, EndsTheLifeOfOneDriver) {
  LoadGreeter(7, "hi");
  LoadGreeter(8, "you");
  observer.all.clear();
  host.Unload(7);
  EXPECT_EQ(observer.all.back().kind, Kind::Unload);
  EXPECT_EQ(observer.all.back().driverId, 7U);
  EXPECT_EQ(host.Drivers().size(), 1U);
  EXPECT_THAT(ErrorOf([&] { host.Unload(7); }), HasSubstr("there is no driver 7"));
  LoadGreeter(7, "again");
}

TEST_F(AHost, GivesAnEmptyReplyForNoNode) {
  LoadGreeter(7, "hi");
  EXPECT_EQ(host.Command(7, "Nothing", {}), "");
  EXPECT_EQ(observer.all.back().kind, Kind::Reply);
}

TEST_F(AHost, FindsTheOneDriverOfACommand) {
  LoadGreeter(7, "hi");
  EXPECT_EQ(host.Command("GreetFirst", {}), "<Greeting>hi</Greeting>");
  LoadGreeter(3, "ho");
  EXPECT_THAT(ErrorOf([&] { host.Command("GreetFirst", {}); }),
              AllOf(HasSubstr("several drivers"), HasSubstr("7 \"well_behaved7\""), HasSubstr("3 \"well_behaved3\"")));
  // Both have the same commands: they are listed once.
  EXPECT_EQ(
      ErrorOf([&] { host.Command("Unheard", {}); }),
      "no driver has registered the command \"Unheard\"; the commands are: well_behaved7: Echo, GreetAll, GreetFirst, Say, "
      "Nothing, StopListening, ReplaceMe, CountVariables");
}

TEST_F(AHost, AnswersUnknownCommandsAndDriversItself) {
  LoadGreeter(7, "hi");
  observer.all.clear();
  EXPECT_THAT(ErrorOf([&] { host.Command(7, "Unheard", {}); }),
              AllOf(HasSubstr("driver 7 \"well_behaved7\" has no command \"Unheard\""), HasSubstr("Echo, GreetAll")));
  EXPECT_THAT(ErrorOf([&] { host.Command(8, "Echo", {}); }),
              AllOf(HasSubstr("no driver 8"), HasSubstr("driver 7 \"well_behaved7\"")));
  EXPECT_THAT(observer.all, IsEmpty());
}

TEST_F(AHost, ListsCommandsInOrderOfRegistration) {
  LoadGreeter(7, "hi");
  EXPECT_THAT(host.Commands(7), ElementsAre("Echo", "GreetAll", "GreetFirst", "Say", "Nothing", "StopListening", "ReplaceMe",
                                            "CountVariables"));
}

TEST_F(AHost, FindsDriversByIdAndQueriesTheEarliestPublished) {
  LoadGreeter(7, "seven");
  LoadGreeter(3, "three");
  LoadGreeter(4000000000UL, "most");
  EXPECT_EQ(host.Command(7, "GreetAll", {}),
            "<Greetings><greeting>three</greeting><greeting>seven</greeting><greeting>most</greeting></Greetings>");
  EXPECT_EQ(host.Command(3, "GreetFirst", {}), "<Greeting>seven</Greeting>");
}

TEST_F(AHost, PassesOnLogNotificationAndInvalidation) {
  LoadGreeter(7, "hi");
  observer.all.clear();
  host.Command(7, "Say", {{"text", "100%"}});
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Command, Kind::Log, Kind::Notification, Kind::Invalidate, Kind::Reply));
  EXPECT_EQ(observer.all[1].level, 3U);
  EXPECT_EQ(observer.all[1].text, "hi says 100%");
  EXPECT_EQ(observer.all[1].driverId, 7U);
  EXPECT_EQ(observer.all[2].text, "<Said>100%</Said>");
  EXPECT_EQ(observer.all[3].driverName, "well_behaved7");
}

TEST_F(AHost, RefusesUnknownEvents) {
  EXPECT_THAT(ErrorOf([&] { host.SendEvent("OnFire", {}); }),
              AllOf(HasSubstr("no system event \"OnFire\""), HasSubstr("OnItemRemoved")));
  EXPECT_THAT(observer.all, IsEmpty());
}

TEST_F(AHost, LetsNestedCallsPass) {
  LoadGreeter(7, "hi");
  LoadGreeter(3, "ho");
  std::string inner;
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Said") {
      inner = host.Command(3, "GreetFirst", {});
    }
  };
  host.Command(7, "Say", {{"text", "x"}});
  EXPECT_EQ(inner, "<Greeting>hi</Greeting>");
}

TEST_F(AHost, GivesThePersistedState) {
  LoadGreeter(7, "hi");
  EXPECT_EQ(host.GetPersistState(7, XmlStyle::Compact), "<State>hi</State>");
}

TEST_F(AHost, HasNoVariablesThatNobodyAdded) {
  LoadGreeter(7, "hi");
  EXPECT_EQ(host.Command(7, "CountVariables", {}),
            "<Variables found=\"no\">&lt;variables&gt;&lt;/variables&gt;</Variables>");
}

TEST_F(AHost, DestroysInReverseOrderThenUnloads) {
  LoadGreeter(7, "hi");
  LoadGreeter(3, "ho");
  observer.all.clear();
  std::vector<bool> present;
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.kind == Kind::Notification) {
      present.push_back(IsInProcess("well_behaved"));
    }
  };
  host.Stop();
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Notification, Kind::Notification, Kind::Unload, Kind::Unload));
  EXPECT_EQ(observer.all[0].driverId, 3U);
  EXPECT_EQ(observer.all[1].driverId, 7U);
  EXPECT_EQ(observer.all[2].driverId, 3U);
  EXPECT_EQ(observer.all[3].driverId, 7U);
  EXPECT_THAT(present, ElementsAre(true, true));
  EXPECT_FALSE(IsInProcess("well_behaved"));
  EXPECT_THAT(host.Drivers(), IsEmpty());
}

TEST_F(AHost, MayBeUsedAgainAfterAStop) {
  LoadGreeter(7, "hi");
  host.Stop();
  LoadGreeter(7, "again");
  EXPECT_EQ(host.Command(7, "GreetFirst", {}), "<Greeting>again</Greeting>");
}

TEST_F(AHost, IsNotStoppedFromInsideACall) {
  LoadGreeter(7, "hi");
  std::string error;
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Said") {
      error = ErrorOf([&] { host.Stop(); });
    }
  };
  host.Command(7, "Say", {});
  observer.then = nullptr;
  EXPECT_THAT(error, AllOf(HasSubstr("cannot be stopped"), HasSubstr("command \"Say\" of driver 7 \"well_behaved7\"")));
  EXPECT_EQ(host.Drivers().size(), 1U);
}

TEST_F(AHost, LoadsNothingWhileItStops) {
  LoadGreeter(7, "hi");
  std::string error;
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Goodbye") {
      error = ErrorOf([&] { LoadGreeter(8, "late"); });
    }
  };
  host.Stop();
  observer.then = nullptr;
  EXPECT_EQ(error, "driver \"well_behaved8\" cannot be loaded while the host stops");
  LoadGreeter(8, "in time");
  EXPECT_EQ(host.Drivers().size(), 1U);
}

TEST_F(AHost, RefusesAnIdTwice) {
  LoadGreeter(7, "hi");
  EXPECT_THAT(ErrorOf([&] { LoadGreeter(7, "ho"); }), HasSubstr("has the id of driver 7 \"well_behaved7\""));
  EXPECT_EQ(host.Drivers().size(), 1U);
}

TEST_F(AHost, RefusesAnIdOfMoreThan32Bits) {
  const auto id = static_cast<unsigned long>(0x1FFFFFFFFULL);
  if (id > 0xFFFFFFFFUL) {
    EXPECT_THAT(ErrorOf([&] { Load(id, "well_behaved"); }), HasSubstr("8589934591"));
    EXPECT_THAT(host.Drivers(), IsEmpty());
  }
}

TEST_F(AHost, RefusesAConfigurationThatIsNoXml) {
  EXPECT_THAT(ErrorOf([&] { Load(7, "well_behaved", "<config>"); }),
              AllOf(HasSubstr("driver 7 \"well_behaved7\": line 1"), HasSubstr("not XML")));
  EXPECT_FALSE(IsInProcess("well_behaved"));
}

TEST_F(AHost, TellsTheDriverWhenItsModuleIsMissing) {
  EXPECT_THAT(ErrorOf([&] { Load(7, "missing"); }),
              AllOf(HasSubstr("driver 7 \"missing7\""), HasSubstr("missing.so"), HasSubstr("No such file")));
  EXPECT_THAT(observer.all, IsEmpty());
}

TEST_F(AHost, RefusesACallFromASecondThreadMeanwhile) {
  Load(5, "rude");
  LoadGreeter(7, "hi");
  std::string refusal;
  const std::function<void()> callFromThread = [&] {
    std::thread([&] { refusal = ErrorOf([&] { host.Command(7, "Nothing", {}); }); }).join();
  };
  const auto address = reinterpret_cast<std::uintptr_t>(&callFromThread);
  host.Command(5, "CallBack", {{"function", std::to_string(address)}});
  EXPECT_EQ(
      refusal,
      "command \"Nothing\" came from a second thread while command \"CallBack\" of driver 5 \"rude5\" is under way; it "
      "was refused");
  EXPECT_THAT(Reports(), ElementsAre(testing::StartsWith(refusal)));
  expectedReports = 1;
  EXPECT_EQ(host.Command(7, "Nothing", {}), "");
}

TEST(ADestroyedHost, StopsFirstAndMakesRoomForAnother) {
  const std::size_t liveAtStart = LiveXmlObjects();
  RecordingObserver observer;
  {
    Host host(observer);
    host.Load(TestDriver(7, "well_behaved"));
  }
  EXPECT_EQ(observer.all.back().kind, Kind::Unload);
  Host another(observer);
  EXPECT_EQ(LiveXmlObjects(), liveAtStart);
}

}  // namespace
}  // namespace devhost

// What modules do through the functions that they find in the process, and whose fault it is.
#include "devhost/engine/ModuleWatch.h"

#include "devhost/engine/HostCore.h"
#include "host/H7XML.h"
#include "host/LogXMessage.h"
#include "tests/devhost/support/HostFixture.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const DriverEntry kRude = TestDriver(5, "rude");

using AModule = HostFixture;

TEST_F(AModule, IsNamedForReleasingTwice) {
  Load(5, "rude");
  host.Command(5, "ReleaseTwice", {});
  ExpectOneReport(kRude, "released once more than it was referenced, by module \"" + TestModule("rude") +
                             "\", during command \"ReleaseTwice\"");
}

TEST_F(AModule, IsNamedForUsingANodeAfterItsRelease) {
  Load(5, "rude");
  host.Command(5, "UseAfterRelease", {});
  ExpectOneReport(kRude, "used (SetValue) after its last reference was released, by module");
}

TEST_F(AModule, IsNamedForAppendingANodeToItself) {
  Load(5, "rude");
  host.Command(5, "AppendToItself", {});
  ExpectOneReport(kRude, "node \"Ring\" was appended to itself");
}

TEST_F(AModule, IsNamedForNodesLeftAlive) {
  Load(5, "rude");
  Load(7, "well_behaved");
  host.Command(5, "LeakNode", {});
  host.Stop();
  ExpectOneReport(kRude, "left 1 XML object alive: node \"Leaked\", by module \"" + TestModule("rude") + "\"");
  leaked = 1;
}

TEST_F(AModule, IsNamedOnceForManyNodesLeftAlive) {
  Load(5, "rude");
  host.Command(5, "LeakFive", {});
  host.Stop();
  ExpectOneReport(kRude, "left 5 XML objects alive: node \"Leaked\", node \"Leaked\", node \"Leaked\", ...");
  leaked = 5;
}

TEST_F(AModule, IsNamedForKeepingANodeOfTheHost) {
  Load(5, "rude");
  host.Command(5, "KeepEvent", {});
  host.SendEvent("OnItemRemoved", {});
  host.Stop();
  ExpectOneReport(kRude, "left 1 XML object alive: node \"event\"");
  leaked = 1;
}

TEST_F(AModule, IsNotBlamedForWhatAnEarlierHostLeftAlive) {
  Load(7, "well_behaved");
  host.Stop();
  EXPECT_THAT(Reports(), IsEmpty());
}

TEST_F(AModule, IsOneOfTheCandidatesWhenItSharesItsModule) {
  Load(4, "rude");
  Load(5, "rude");
  host.Command(5, "ReleaseTwice", {});
  EXPECT_THAT(Reports(), ElementsAre(StartsWith("one of them: an XML object was released once more")));
  const Occurrence& report = observer.all[observer.all.size() - 2];
  EXPECT_EQ(report.driverName, "");
  EXPECT_THAT(report.candidates, ElementsAre("rude4", "rude5"));
}

TEST_F(AModule, HasItsLogLinesNamedAfterItsDriver) {
  Load(7, "well_behaved", "<config greeting='hi'/>");
  observer.all.clear();
  host.Command(7, "Say", {{"text", "100%"}});
  ASSERT_EQ(observer.all[1].kind, Kind::Log);
  EXPECT_EQ(observer.all[1].level, 3U);
  EXPECT_EQ(observer.all[1].text, "hi says 100%");
  EXPECT_EQ(observer.all[1].driverId, 7U);
}

TEST_F(AModule, ThatSeveralDriversShareHasItsLogLinesNamedAfterTheOneThatIsCalled) {
  Load(7, "well_behaved");
  Load(8, "well_behaved");
  observer.all.clear();
  host.Command(8, "Say", {});
  EXPECT_EQ(observer.all[1].driverName, "well_behaved8");
  EXPECT_THAT(observer.all[1].candidates, IsEmpty());
}

TEST_F(AModule, OfNoDriverLogsForNobodyOutsideOfACall) {
  Load(7, "well_behaved");
  observer.all.clear();
  LogXMessage(2, "from the program");
  ASSERT_THAT(observer.Texts(Kind::Log), ElementsAre("from the program"));
  EXPECT_EQ(observer.all[0].driverName, "");
  EXPECT_THAT(observer.all[0].candidates, IsEmpty());
}

TEST_F(AModule, OfNoDriverIsNotBlamedForXmlThatItHolds) {
  Load(7, "well_behaved");
  const h7::auto_com<H7XML::INode> mine = H7XML::CreateXmlNode("Mine", "");
  host.Stop();
  EXPECT_THAT(Reports(), IsEmpty());
}

TEST_F(AModule, IsWatchedByOneHostAtATime) {
  RecordingObserver other;
  EXPECT_EQ(ErrorOf([&] { Host second(other); }), "there is a host in this process already; only one at a time is possible");
  // The first one still hears.
  LogXMessage(2, "a line");
  EXPECT_THAT(observer.Texts(Kind::Log), ElementsAre("a line"));
  EXPECT_THAT(other.all, IsEmpty());
}

TEST_F(AModule, IsHeardByItsHostWhileAnotherOneLivesInside) {
  Load(7, "well_behaved");
  observer.all.clear();
  RecordingObserver other;
  {
    Host inside(other, host);
    LogXMessage(2, "inside");
  }
  LogXMessage(2, "outside");
  EXPECT_THAT(other.Texts(Kind::Log), ElementsAre("inside"));
  EXPECT_THAT(observer.Texts(Kind::Log), ElementsAre("outside"));
}

TEST(AModuleWatch, IsFollowedByAnother) {
  RecordingObserver observer;
  HostCore core(observer);
  { const ModuleWatch first(core); }
  LogXMessage(2, "nobody listens");
  const ModuleWatch second(core);
  LogXMessage(2, "a line");
  EXPECT_THAT(observer.Texts(Kind::Log), ElementsAre("a line"));
}

}  // namespace
}  // namespace devhost

#include "devhost/engine/HostCore.h"

#include <gmock/gmock.h>

#include <memory>
#include <thread>

#include "devhost/engine/LoadedDriver.h"
#include "tests/devhost/support/RecordingObserver.h"
#include "tests/devhost/support/TestModules.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::ElementsAre;
using testing::IsEmpty;

// Lies in no module of a driver.
const int kForeign = 0;

class AHostCore : public testing::Test {
 protected:
  std::shared_ptr<LoadedDriver> Add(unsigned long id, const std::string& module = "well_behaved") {
    std::shared_ptr<LoadedDriver> driver = std::make_shared<LoadedDriver>(core, TestDriver(id, module));
    core.Add(driver);
    return driver;
  }

  // An address in the code of a driver's module.
  static const void* CodeOf(const std::string& module) { return DriverModule(TestModule(module)).Version(); }

  RecordingObserver observer;
  HostCore core{observer};
};

TEST_F(AHostCore, KnowsItsDriversInTheOrderOfLoading) {
  const auto seven = Add(7);
  const auto three = Add(3);
  EXPECT_THAT(core.Snapshot(), ElementsAre(seven, three));
  EXPECT_EQ(core.Find(3), three);
  EXPECT_EQ(core.Find(5), nullptr);
  core.Remove(*seven);
  EXPECT_THAT(core.Snapshot(), ElementsAre(three));
  EXPECT_EQ(core.Find(7), nullptr);
}

TEST_F(AHostCore, ListsTheFirstTwentyDriversForAnIdThatIsNotThere) {
  for (unsigned long id = 1; id <= 22; ++id) {
    Add(id);
  }
  try {
    core.Get(99, "GetPersistState");
    FAIL() << "there is a driver 99";
  } catch (const HostError& error) {
    EXPECT_THAT(error.what(),
                testing::StartsWith("there is no driver 99; loaded are: driver 1 \"well_behaved1\", driver 2"));
    EXPECT_THAT(error.what(), testing::EndsWith(", driver 20 \"well_behaved20\", ..."));
    EXPECT_EQ(error.call, "GetPersistState");
  }
}

TEST_F(AHostCore, NamesTheDriverOfWhatItEmits) {
  const auto driver = Add(7);
  core.Emit(Kind::Unload, driver.get(), "", "a.so");
  core.Emit(Kind::Unload, nullptr, "", "b.so");
  EXPECT_EQ(observer.all[0].driverId, 7U);
  EXPECT_EQ(observer.all[0].driverName, "well_behaved7");
  EXPECT_EQ(observer.all[0].text, "a.so");
  EXPECT_EQ(observer.all[1].driverName, "");
}

TEST_F(AHostCore, NamesCandidatesOnlyWhereNobodyIsKnownForSure) {
  const auto seven = Add(7);
  const auto three = Add(3);
  core.Report(nullptr, "left a node", {seven, three});
  core.Report(seven.get(), "left a node", {seven, three});
  EXPECT_THAT(observer.all[0].candidates, ElementsAre("well_behaved7", "well_behaved3"));
  EXPECT_EQ(observer.all[0].text, "one of them: left a node");
  EXPECT_THAT(observer.all[1].candidates, IsEmpty());
  EXPECT_EQ(observer.all[1].text, "left a node");
  EXPECT_EQ(core.MannersCount(), 2U);
}

TEST_F(AHostCore, ReportsTheCallThatIsUnderWay) {
  const auto driver = Add(7);
  core.Report(driver.get(), "too early");
  const CallScope host(core, nullptr, "stop");
  core.Report(driver.get(), "too early");
  const CallScope inDriver(core, driver.get(), "destruction");
  core.Report(driver.get(), "a query of driver 7 \"well_behaved7\" failed");
  core.Report(nullptr, "a query of driver 7 \"well_behaved7\" failed");
  EXPECT_EQ(observer.all[0].call, "");
  EXPECT_EQ(observer.all[1].call, "stop");
  // The report carries its driver, so that only others are named in its text.
  EXPECT_EQ(observer.all[2].call, "destruction");
  EXPECT_EQ(observer.all[2].text, "a query failed");
  EXPECT_EQ(observer.all[3].call, "destruction of driver 7 \"well_behaved7\"");
  EXPECT_EQ(observer.all[3].text, "a query of driver 7 \"well_behaved7\" failed");
}

TEST_F(AHostCore, FindsTheDriversOfAPieceOfCode) {
  const auto seven = Add(7);
  const auto rude = Add(5, "rude");
  const void* const code = CodeOf("well_behaved");
  EXPECT_THAT(core.OwnersOf(code), ElementsAre(seven));
  EXPECT_EQ(core.DriverOf(code), seven);
  const auto three = Add(3);
  EXPECT_THAT(core.OwnersOf(code), ElementsAre(seven, three));
  EXPECT_EQ(core.DriverOf(code), nullptr);
  {
    const CallScope scope(core, three.get(), "Initialize");
    EXPECT_EQ(core.DriverOf(code), three);
  }
  const CallScope scope(core, rude.get(), "Initialize");
  EXPECT_EQ(core.DriverOf(code), nullptr);
}

TEST_F(AHostCore, CountsForeignCodeForTheDriverThatIsCalled) {
  const auto driver = Add(7);
  const void* const foreign = &kForeign;
  EXPECT_THAT(core.OwnersOf(foreign), IsEmpty());
  EXPECT_EQ(core.DriverOf(foreign), nullptr);
  const CallScope scope(core, driver.get(), "Initialize");
  EXPECT_EQ(core.DriverOf(foreign), driver);
}

TEST_F(AHostCore, RemembersWhoseStatesAreInvalidInTheOrderOfLoading) {
  const auto seven = Add(7);
  const auto three = Add(3);
  const auto nine = Add(9);
  core.NoteStateInvalid(*nine);
  core.NoteStateInvalid(*seven);
  core.NoteStateInvalid(*seven);
  EXPECT_THAT(core.WithInvalidStates(), ElementsAre(seven, nine));
  core.NoteStateTaken(*seven);
  EXPECT_THAT(core.WithInvalidStates(), ElementsAre(nine));
  core.Remove(*nine);
  core.NoteStateInvalid(*nine);
  EXPECT_THAT(core.WithInvalidStates(), IsEmpty());
}

TEST_F(AHostCore, LetsOneThreadIntoTheDriversAtATime) {
  const auto driver = Add(7);
  const CallScope outer(core, nullptr, "loading");
  const CallScope nested(core, driver.get(), "Initialize");
  std::thread([&] {
    try {
      const CallScope second(core, nullptr, "event \"OnItemRemoved\"");
      ADD_FAILURE() << "two threads are inside";
    } catch (const HostError& error) {
      EXPECT_STREQ(
          error.what(),
          "event \"OnItemRemoved\" came from a second thread while Initialize of driver 7 \"well_behaved7\" is under "
          "way; it was refused");
      EXPECT_EQ(error.call, "event \"OnItemRemoved\"");
      EXPECT_EQ(error.text,
                "came from a second thread while Initialize of driver 7 \"well_behaved7\" is under way; it was refused");
    }
  }).join();
  EXPECT_EQ(core.MannersCount(), 1U);
}

}  // namespace
}  // namespace devhost

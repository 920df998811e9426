#include "devhost/conform/Bench.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "devhost/conform/Check.h"
#include "tests/devhost/conform/Conforming.h"

namespace devhost {
namespace {

class ABench : public testing::Test {
 protected:
  Trial MakeTrial(const std::string& fault) const { return {SkeletonModule(fault), folder.Path(), {}, 7}; }

  const testsupport::ScratchFolder folder;
};

TEST_F(ABench, GivesADeviceToCallThatKnowsTheAgent) {
  Trial trial = MakeTrial("none");
  Bench bench(trial);
  std::string text;
  bench.ActOnDevice([&](Device& device) { text = device.Call("GetSNMPVersion", &ISupportSNMP::GetSNMPVersion); });
  EXPECT_EQ(text, "1.0.0");
  EXPECT_EQ(bench.CountOf("AddSNMPDevice"), 1U);
  EXPECT_EQ(bench.CountOf("AddSNMPDevice", 13), 0U);
}

TEST_F(ABench, GivesEachDeviceAFolder) {
  Trial trial = MakeTrial("none");
  Bench bench(trial);
  bench.Load(12);
  bench.Load(13);
  EXPECT_EQ(bench.Published().size(), 2U);
  EXPECT_NE(bench.FolderOf(12), bench.FolderOf(13));
  EXPECT_TRUE(std::filesystem::is_directory(bench.FolderOf(13)));
}

TEST_F(ABench, SaysWhyThereIsNoDevice) {
  Trial trial = MakeTrial("life-publish");
  Bench bench(trial);
  bench.Load();
  EXPECT_THROW(bench.GetDevice(), Blocked);
  EXPECT_THAT(WhyNotADevice(bench.Published().front(), trial.module), testing::HasSubstr("is not an ISupportSNMP"));
}

TEST_F(ABench, KnowsThatTheSlotsOfADeviceLeadIntoItsModule) {
  Trial trial = MakeTrial("none");
  Bench bench(trial);
  bench.Load();
  EXPECT_EQ(WhyNotADevice(bench.Published().front(), trial.module), "");
  EXPECT_THAT(WhyNotADevice(bench.Published().front(), SkeletonModule("traps-add")),
              testing::AllOf(testing::HasSubstr("slot 1 of the device leads to "), testing::HasSubstr("none.so")));
}

TEST_F(ABench, SaysWhyADriverCannotBeLoaded) {
  Trial trial = MakeTrial("life-create");
  Bench bench(trial);
  EXPECT_EQ(bench.TryLoad(12), "");
  EXPECT_THAT(bench.TryLoad(13), testing::HasSubstr("was not made"));
  EXPECT_THROW(bench.Load(14), Blocked);
}

TEST_F(ABench, PassesOnWhatACheckThrows) {
  Trial trial = MakeTrial("none");
  Bench bench(trial);
  EXPECT_THROW(bench.Act([] { throw Violation("no"); }), Violation);
  EXPECT_THROW(bench.Act([] { throw Blocked("no"); }), Blocked);
  EXPECT_NO_THROW(bench.Act([] {}));
}

TEST_F(ABench, KeepsTheLinesOfTheLogThatOperatorsSee) {
  Trial trial = MakeTrial("none");
  Bench bench(trial);
  bench.TryLoad(12, "<config/>");
  EXPECT_THAT(bench.OperatorLines(), testing::ElementsAre("device 12 has no folder"));
  EXPECT_EQ(bench.Lines(Occurrence::Kind::Failure).size(), 1U);
}

}  // namespace
}  // namespace devhost

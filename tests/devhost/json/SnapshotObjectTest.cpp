#include "devhost/json/SnapshotObject.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace devhost {
namespace {

class ASnapshotAsAnObject : public testing::Test {
 protected:
  Snapshot snapshot{
      3, 1790000000, "apply", {"", "<managedDevice><snmpSysNameSetting>one</snmpSysNameSetting></managedDevice>"}, {}};
};

TEST_F(ASnapshotAsAnObject, SaysWhenWhatAndWhetherItHasFinished) {
  EXPECT_EQ(SnapshotObject(snapshot, false).dump(),
            R"({"snapshot":3,"time":"2026-09-21T14:13:20Z","operation":"apply","finished":false,"settings":[]})");
  snapshot.after = DeviceCopy{"", "<managedDevice><snmpSysNameSetting>two</snmpSysNameSetting></managedDevice>"};
  EXPECT_EQ(SnapshotObject(snapshot, false).at("settings").dump(), R"(["snmpSysNameSetting"])");
}

TEST_F(ASnapshotAsAnObject, ShowsNoOperationThatIsNotOneOfOurs) {
  for (const auto& [operation, shown] : {std::pair{"undo 3", "undo 3"}, {"undo hidden", "*****"}, {"hidden", "*****"}}) {
    snapshot.operation = operation;
    EXPECT_EQ(ShownOperation(snapshot, false), shown);
    EXPECT_EQ(ShownOperation(snapshot, true), operation);
  }
}

TEST_F(ASnapshotAsAnObject, ShowsTheStepsOfARotation) {
  for (const char* const operation : {"rotate", "rotate finish", "rotate abort"}) {
    snapshot.operation = operation;
    EXPECT_EQ(ShownOperation(snapshot, false), operation);
  }
}

TEST(ADifferenceAsAnObject, HasTheFileAndTheSettings) {
  const CopyDifference difference{"-a\n+b\n", {{"snmpSysNameSetting", "a", "b"}}};
  EXPECT_EQ(DifferenceObject(difference).dump(),
            R"({"difference":"-a\n+b\n","settings":[{"name":"snmpSysNameSetting","before":"a","after":"b"}]})");
}

}  // namespace
}  // namespace devhost

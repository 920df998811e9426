#include "devhost/driver/InstanceDirectory.h"

#include <gmock/gmock.h>

#include "devhost/driver/DriverServices.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AllowingCheck : public ServiceCheck {
 public:
  bool Enter(const char*, From) override {
    inside += allowed ? 1 : 0;
    return allowed;
  }
  void Leave() noexcept override { --inside; }
  void NotePublished(const std::string&, void*) override {}
  void NoteWithdrawn(const std::string&, void*) override {}
  void* Shown(const std::string&, void* instance) override { return instance; }
  void Report(const std::string& what) override { FAIL() << what; }
  int inside = 0;
  bool allowed = true;
};

class InstanceManagers : public testing::Test {
 protected:
  std::vector<void*> Find(InstanceManager& manager, const char* iid) {
    std::vector<void*> instances(3);
    manager.FindDrivers(0, iid, instances);
    return instances;
  }

  InstanceDirectory directory;
  AllowingCheck check;
  int services = 0;
  int x = 0;
  int y = 0;
  InstanceManager seven{directory, check, 7, &services};
  InstanceManager three{directory, check, 3, nullptr};
};

TEST_F(InstanceManagers, ShareOneDirectory) {
  EXPECT_TRUE(seven.RegisterQuery("iid", &x));
  EXPECT_EQ(three.Query("iid"), &x);
  EXPECT_EQ(three.Query("IID"), nullptr);
  seven.UnregisterQuery("iid");
  EXPECT_EQ(three.Query("iid"), nullptr);
}

TEST_F(InstanceManagers, RefuseNullAndWhatTheirDriverHasPublished) {
  EXPECT_FALSE(seven.RegisterQuery(nullptr, &x));
  EXPECT_FALSE(seven.RegisterQuery("iid", nullptr));
  EXPECT_TRUE(seven.RegisterQuery("iid", &x));
  EXPECT_FALSE(seven.RegisterQuery("iid", &y));
  EXPECT_EQ(seven.Query("iid"), &x);
  EXPECT_EQ(seven.Query(nullptr), nullptr);
}

TEST_F(InstanceManagers, AnswerWithTheEarliestAndListById) {
  seven.RegisterQuery("iid", &x);
  three.RegisterQuery("iid", &y);
  EXPECT_EQ(three.Query("iid"), &x);
  EXPECT_THAT(Find(seven, "iid"), ElementsAre(&y, &x));
  EXPECT_THAT(Find(seven, "other"), IsEmpty());
  EXPECT_THAT(Find(seven, nullptr), IsEmpty());
}

TEST_F(InstanceManagers, WithdrawOnlyTheirOwnDrivers) {
  seven.RegisterQuery("iid", &x);
  three.UnregisterQuery("iid");
  three.UnregisterQuery(nullptr);
  EXPECT_EQ(seven.Query("iid"), &x);
}

TEST_F(InstanceManagers, KnowTheServicesOfTheirDriver) {
  EXPECT_EQ(seven.Query(DriverServices_IID), &services);
  EXPECT_EQ(three.Query(DriverServices_IID), nullptr);
  EXPECT_FALSE(three.RegisterQuery(DriverServices_IID, &x));
}

TEST_F(InstanceManagers, DoNothingWhileAnotherThreadIsInside) {
  seven.RegisterQuery("iid", &x);
  check.allowed = false;
  EXPECT_FALSE(three.RegisterQuery("iid", &y));
  EXPECT_EQ(seven.Query("iid"), nullptr);
  EXPECT_THAT(Find(seven, "iid"), IsEmpty());
  seven.UnregisterQuery("iid");
  check.allowed = true;
  EXPECT_THAT(Find(seven, "iid"), ElementsAre(&x));
}

TEST_F(InstanceManagers, LoseAllOfADriverAtOnce) {
  seven.RegisterQuery("a", &x);
  seven.RegisterQuery("b", &y);
  three.RegisterQuery("b", &x);
  EXPECT_THAT(directory.WithdrawAll(7), ElementsAre("a", "b"));
  EXPECT_THAT(directory.WithdrawAll(7), IsEmpty());
  EXPECT_EQ(seven.Query("b"), &x);
}

}  // namespace
}  // namespace devhost

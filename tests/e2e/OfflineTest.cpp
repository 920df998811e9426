// A controller that cannot be reached for a while, and files that somebody else edits.
#include <gmock/gmock.h>

#include "tests/e2e/RealSystem.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using OffLine = ARealSystem;
using AFileThatChanges = ARealSystem;

constexpr char kByHand[] = "# by hand\nproc sshd\n";
// The name of the first process that a proc line watches.
constexpr char kWatched[] = ".1.3.6.1.4.1.2021.2.1.2.1";

Settings Named(const std::string& name) {
  Settings settings;
  settings.read = "public";
  settings.name = name;
  return settings;
}

TEST_F(OffLine, ChangesWaitAndAreServedWhenTheControllerIsBack) {
  Begin(kByHand);
  Serve(kKitchen, Named("kitchen"));
  const std::string before = File(kKitchen);
  ASSERT_EQ(SetOnline(kKitchen, false), "<Success/>");
  EXPECT_EQ(SetState(kKitchen, Named("pantry")), "<Success/>");
  EXPECT_EQ(SetState(kKitchen, Named("larder")), "<Success/>");
  EXPECT_TRUE(IsDirty(kKitchen));
  EXPECT_TRUE(GetDaemon(kKitchen).pending);
  EXPECT_EQ(File(kKitchen), before);
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");

  ASSERT_EQ(SetOnline(kKitchen, true), "<Success/>");
  EXPECT_FALSE(GetDaemon(kKitchen).pending);
  EXPECT_FALSE(IsDirty(kKitchen));
  EXPECT_EQ(As("public").Get(kSysName).value, "larder");
  EXPECT_EQ(As("public").Get(kWatched).value, "sshd");
  EXPECT_THAT(File(kKitchen), EndsWith(std::string("\n") + kByHand));
}

TEST_F(OffLine, TheControllerCannotBeActedOn) {
  Begin(kByHand);
  Serve(kKitchen, Named("kitchen"));
  const pid_t pid = GetDaemon(kKitchen).pid;
  ASSERT_EQ(SetOnline(kKitchen, false), "<Success/>");
  for (const char* const action : {"StopMasterAgent", "StartMasterAgent", "RebootController"}) {
    EXPECT_EQ(Action(kKitchen, action), "<Fail/>") << action;
  }
  EXPECT_EQ(GetDaemon(kKitchen).pid, pid);
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");
  ASSERT_EQ(SetOnline(kKitchen, true), "<Success/>");
  EXPECT_EQ(Action(kKitchen, "StopMasterAgent"), "<Success/>");
}

TEST_F(OffLine, AChangeOutlivesTheHost) {
  Begin(kByHand);
  Serve(kKitchen, Named("kitchen"));
  ASSERT_EQ(SetOnline(kKitchen, false), "<Success/>");
  ASSERT_EQ(SetState(kKitchen, Named("pantry")), "<Success/>");
  RestartHost();
  LoadAgent();
  LoadDevice(kKitchen);
  EXPECT_TRUE(GetDaemon(kKitchen).pending);
  ASSERT_EQ(SetOnline(kKitchen, true), "<Success/>");
  ASSERT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
  EXPECT_EQ(As("public").Get(kSysName).value, "pantry");
  EXPECT_EQ(As("public").Get(kWatched).value, "sshd");
}

TEST_F(AFileThatChanges, WhileTheControllerIsOffLineIsNotOverwritten) {
  Begin(kByHand);
  Serve(kKitchen, Named("kitchen"));
  ASSERT_EQ(SetOnline(kKitchen, false), "<Success/>");
  ASSERT_EQ(SetState(kKitchen, Named("pantry")), "<Success/>");
  const std::string edited = File(kKitchen) + "proc cron\n";
  WriteFile(kKitchen, edited);
  EXPECT_THAT(SetOnline(kKitchen, true), StartsWith("<Fail>"));
  EXPECT_EQ(File(kKitchen), edited);
  EXPECT_TRUE(IsDirty(kKitchen));
  EXPECT_FALSE(GetDaemon(kKitchen).pending);

  // The tool sends its settings again, and this time they are merged into the file as it is now.
  EXPECT_EQ(SetState(kKitchen, Named("pantry")), "<Success/>");
  EXPECT_FALSE(IsDirty(kKitchen));
  EXPECT_THAT(File(kKitchen), EndsWith("proc sshd\nproc cron\n"));
  EXPECT_EQ(As("public").Get(kSysName).value, "pantry");
}

// When the device reads a file that it does not know yet, it invalidates its state. That is after the read and before the
// write, so this is the moment at which the test edits the file. The device invalidates its state only once until the host
// has asked for it. So the request must set nothing new, and the test sends one that has failed before.
TEST_F(AFileThatChanges, BetweenReadAndWriteIsNotOverwritten) {
  Begin("# by hand\n");
  host->Command(kKitchen, "FailOperation", {{"operation", "CopyTo"}, {"status", "5"}, {"times", "1"}});
  ASSERT_EQ(SetState(kKitchen, Named("kitchen")), "<WriteFail/>");
  WriteFile(kKitchen, "# by hand\n# again\n");
  std::string edited;
  observer.then = [this, &edited](const devhost::Occurrence& occurrence) {
    if (occurrence.kind == devhost::Occurrence::Kind::Invalidate && occurrence.driverId == kKitchen && edited.empty() &&
        Count(kKitchen, "CopyFrom") == 2) {
      edited = File(kKitchen) + "# in between\n";
      WriteFile(kKitchen, edited);
    }
  };
  EXPECT_EQ(SetState(kKitchen, Named("kitchen")), "<WriteFail/>");
  observer.then = nullptr;
  ASSERT_FALSE(edited.empty()) << "nobody could edit in between";
  EXPECT_EQ(Count(kKitchen, "CopyTo"), 2);
  EXPECT_EQ(File(kKitchen), edited);
  EXPECT_TRUE(IsDirty(kKitchen));

  Serve(kKitchen, Named("kitchen"));
  EXPECT_THAT(File(kKitchen), EndsWith("# by hand\n# again\n# in between\n"));
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");
}

}  // namespace
}  // namespace e2e

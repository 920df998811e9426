#include "devhost/driver/ServiceCheck.h"

#include <gtest/gtest.h>

#include <string>

namespace devhost {
namespace {

class RecordingCheck : public ServiceCheck {
 public:
  bool Enter(const char* operation, From from) override {
    calls += std::string(operation) + (from == From::Initialize ? " from Initialize on;" : ";");
    return allowed;
  }
  void Leave() noexcept override { calls += "left;"; }
  void NotePublished(const std::string&, void*) override {}
  void NoteWithdrawn(const std::string&, void*) override {}
  void* Shown(const std::string&, void* instance) override { return instance; }
  void Report(const std::string& what) override { calls += what; }
  std::string calls;
  bool allowed = true;
};

TEST(AServiceCall, KeepsOthersOutForAsLongAsItLives) {
  RecordingCheck check;
  {
    const ServiceCall call(check, "Query");
    EXPECT_TRUE(call.IsAllowed());
    EXPECT_EQ(check.calls, "Query;");
  }
  EXPECT_EQ(check.calls, "Query;left;");
}

TEST(AServiceCall, ThatIsRefusedIsNotLeft) {
  RecordingCheck check;
  check.allowed = false;
  {
    const ServiceCall call(check, "RegisterQuery", ServiceCheck::From::Initialize);
    EXPECT_FALSE(call.IsAllowed());
  }
  EXPECT_EQ(check.calls, "RegisterQuery from Initialize on;");
}

}  // namespace
}  // namespace devhost

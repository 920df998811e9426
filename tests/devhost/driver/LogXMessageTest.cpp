#include "host/LogXMessage.h"

#include <gmock/gmock.h>

#include <cwchar>
#include <string>
#include <vector>

#include "devhost/driver/DriverModule.h"
#include "devhost/driver/LogSink.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

class TheLog : public testing::Test, public LogSink {
 protected:
  TheLog() { SetLogSink(this); }
  ~TheLog() override { SetLogSink(nullptr); }
  void Log(unsigned int level, const char* line, const void* code) noexcept override {
    lines.push_back(std::to_string(level) + ":" + line);
    caller = ModuleFileOf(code);
  }
  std::vector<std::string> lines;
  std::string caller;
};

TEST_F(TheLog, GetsTheFormattedLineAndItsCaller) {
  LogXMessage(3, "%s=%lu%%", "x", 4294967295UL);
  EXPECT_THAT(lines, ElementsAre("3:x=4294967295%"));
  EXPECT_THAT(caller, EndsWith("devhost_driver_test"));
}

TEST_F(TheLog, TakesLinesOfAnyLength) {
  const std::string text(100000, 'x');
  LogXMessage(1, "%s", text.c_str());
  EXPECT_THAT(lines, ElementsAre("1:" + text));
}

TEST_F(TheLog, TakesNoLineWithoutAFormat) {
  LogXMessage(1, nullptr);
  EXPECT_THAT(lines, IsEmpty());
}

TEST_F(TheLog, TakesNoLineWhoseFormatCannotBeFollowed) {
  constexpr wint_t kOutsideOfEveryCharacterSet = 0x7FFFFFFF;
  LogXMessage(1, "%lc", kOutsideOfEveryCharacterSet);
  EXPECT_THAT(lines, IsEmpty());
}

TEST_F(TheLog, PrintsNothingItself) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  LogXMessage(2, "%d", 5);
  EXPECT_EQ(SetLogSink(nullptr), static_cast<LogSink*>(this));
  LogXMessage(2, "%d", 6);
  EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
  EXPECT_THAT(lines, ElementsAre("2:5"));
}

}  // namespace
}  // namespace devhost

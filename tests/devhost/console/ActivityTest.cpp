#include "devhost/console/Activity.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace devhost {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kMinute = 60'000;
constexpr std::int64_t kNow = 30'000'000 * kMinute + 12'345;

Json Read(const Activity& activity, std::int64_t now) {
  return Json::parse(activity.AsJson(now));
}

TEST(TheActivity, IsAnHourThatEndsWithThisMinute) {
  Activity activity;
  activity.OnRequest(12, kNow);
  activity.OnRequest(12, kNow);
  const Json all = Read(activity, kNow);
  EXPECT_EQ(all["from"], (30'000'000 - 59) * kMinute);
  EXPECT_EQ(all["minutes"], 60);
  const Json& device = all["devices"].at(0);
  EXPECT_EQ(device["id"], 12);
  ASSERT_EQ(device["requests"].size(), 60U);
  EXPECT_EQ(device["requests"].at(59), 2);
  EXPECT_EQ(device["requests"].at(58), 0);
  EXPECT_EQ(device["restarts"].at(59), 0);
  EXPECT_TRUE(device["probeMs"].at(59).is_null());
}

TEST(TheActivity, MovesWithTime) {
  Activity activity;
  activity.OnRequest(12, kNow);
  EXPECT_EQ(Read(activity, kNow + 59 * kMinute)["devices"][0]["requests"][0], 1);
  const Json later = Read(activity, kNow + 60 * kMinute);
  EXPECT_EQ(later["devices"][0]["requests"], Json(std::vector<int>(60, 0)));
  activity.OnRequest(12, kNow + 60 * kMinute);  // takes the place of the minute an hour ago
  EXPECT_EQ(Read(activity, kNow + 60 * kMinute)["devices"][0]["requests"][59], 1);
}

TEST(TheActivity, HasRestartsAndTheSlowestProbeOfEachMinute) {
  Activity activity;
  activity.OnEvent({{"kind", "load"}, {"driver", "kitchen"}, {"driverId", 12U}}, kNow);
  activity.OnEvent({{"kind", "restart"}, {"device", 12U}}, kNow);
  activity.OnEvent({{"kind", "probe"}, {"device", 12U}, {"ms", 2.5}}, kNow);
  activity.OnEvent({{"kind", "probe"}, {"device", 12U}, {"ms", 1.5}}, kNow);
  const Json all = Read(activity, kNow);
  const Json& device = all["devices"].at(0);
  EXPECT_EQ(device["name"], "kitchen");
  EXPECT_EQ(device["restarts"][59], 1);
  EXPECT_EQ(device["probeMs"][59], 2.5);
}

TEST(AnEventWithOddMembers, CountsForNothing) {
  Activity activity;
  for (const char* const event :
       {R"({"kind":"restart"})", R"({"kind":"restart","device":"x"})", R"({"kind":"restart","device":-1})",
        R"({"kind":5,"device":1})", R"({"device":1})", R"({"kind":"other","device":1})", R"({"kind":"probe","device":1})"}) {
    activity.OnEvent(Json::parse(event), kNow);
  }
  EXPECT_EQ(Read(activity, kNow)["devices"].size(), 0U);
}

TEST(TheActivity, IsBounded) {
  Activity activity;
  for (std::uint64_t id = 0; id < 3000; ++id) {
    activity.OnRequest(id, kNow);
  }
  EXPECT_EQ(Read(activity, kNow)["devices"].size(), Activity::kMostDevices);
}

}  // namespace
}  // namespace devhost

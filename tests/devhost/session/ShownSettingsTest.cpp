#include "devhost/session/ShownSettings.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "devhost/session/RequestError.h"

namespace devhost {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class AnEdit : public testing::Test {
 protected:
  AnEdit() {
    now.communityRead.value = "hidden1";
    now.communityWrite.value = "hidden2";
    now.sysContact.value = "Ada";
    now.trapTargets.value = {{"192.0.2.5", "hidden3", "162"}, {"nms.example", "hidden4", ""}};
    edit = json::parse(R"({
      "enabled": true, "readCommunity": {"keep": true}, "writeCommunity": {"keep": true}, "contact": "Ada",
      "usePrimaryContact": false, "location": "", "useOwnerAddress": false, "name": "", "useRoomDevice": false,
      "trapTargets": [{"target": "192.0.2.5", "community": {"keep": 0}, "port": "162"},
                      {"target": "nms.example", "community": {"keep": 1}, "port": ""}]})");
  }

  DeviceAnswers Merged() { return MergeEdit(edit, now, secrets); }
  // What is wrong with the edit; "" for nothing.
  std::string Problem() {
    try {
      Merged();
    } catch (const RequestError& error) {
      EXPECT_EQ(error.status, 422);
      return error.what();
    }
    return "";
  }

  Masker secrets{false};
  DeviceAnswers now;
  json edit;
};

TEST_F(AnEdit, KeepsReplacesAndErasesSecrets) {
  edit["readCommunity"] = {{"value", "hidden5"}};
  edit["writeCommunity"] = {{"value", ""}};
  const DeviceAnswers merged = Merged();
  EXPECT_EQ(merged.isEnabled, true);
  EXPECT_EQ(merged.communityRead.value, "hidden5");
  EXPECT_EQ(merged.communityWrite.value, "");
  EXPECT_EQ(merged.sysContact.value, "Ada");
  ASSERT_EQ(merged.trapTargets.value.size(), 2U);
  EXPECT_EQ(merged.trapTargets.value[1].community, "hidden4");
  EXPECT_EQ(secrets.Text("it is hidden5"), "it is *****");
}

TEST_F(AnEdit, KeepsTheSecretOfATargetThatWasMoved) {
  std::swap(edit["trapTargets"][0], edit["trapTargets"][1]);
  const DeviceAnswers merged = Merged();
  EXPECT_EQ(merged.trapTargets.value[0].target, "nms.example");
  EXPECT_EQ(merged.trapTargets.value[0].community, "hidden4");
  EXPECT_EQ(merged.trapTargets.value[1].community, "hidden3");
}

TEST_F(AnEdit, KeepsTheTextOfATargetThatWasHidden) {
  now.trapTargets.value[0].target = "192.0.2.5 hidden3";
  const json shown = ShownSettings(now, secrets);
  EXPECT_EQ(shown["trapTargets"][0]["target"], (json{{"value", ""}, {"hidden", true}}));
  edit["trapTargets"][0]["target"] = {{"keep", 0U}};
  EXPECT_EQ(Merged().trapTargets.value[0].target, "192.0.2.5 hidden3");
}

TEST_F(AnEdit, IsOfTargetsThatAreShownUnlessTheyMayBeCommunities) {
  using Targets = std::vector<TrapTarget>;
  const auto isShown = [this](const std::string& target) {
    now.trapTargets.value = Targets{{target, "hidden.3", ""}};
    const json shown = ShownSettings(now, secrets)["trapTargets"][0]["target"];
    EXPECT_EQ(shown.is_string(), shown == target) << target;
    return shown.is_string();
  };
  for (const char* const name : {"192.0.2.5", "nms.example", "udp:nms.example:162", "[2001:db8::1]", "localhost", ""}) {
    EXPECT_TRUE(isShown(name)) << name;
  }
  for (const char* const name : {"private", "nms.example secret", "a.hidden.3", "hidden1.example", "\"n.example\""}) {
    EXPECT_FALSE(isShown(name)) << name;
  }
}

TEST_F(AnEdit, KeepsATextThatWasHidden) {
  now.sysContact.value = "Ada, with hidden1";
  const json shown = ShownSettings(now, secrets);
  EXPECT_EQ(shown["contact"], (json{{"value", ""}, {"hidden", true}, {"erased", false}}));
  EXPECT_THAT(shown.dump(), Not(HasSubstr("hidden1")));
  edit["contact"] = {{"keep", true}};
  EXPECT_EQ(Merged().sysContact.value, "Ada, with hidden1");
}

TEST_F(AnEdit, KeepsOnlyWhereItSaysSoPlainly) {
  const json whole = edit;
  for (const char* const place : {"/readCommunity", "/writeCommunity", "/contact", "/location", "/name",
                                  "/trapTargets/0/target", "/trapTargets/0/community", "/trapTargets/0/port"}) {
    for (const char* const wish : {R"({"keep":false})", "{}", R"({"keep":"text"})", R"({"keep":null})", R"({"keep":-1})",
                                   R"({"keep":[true]})", R"({"keep":9})"}) {
      edit = whole;
      edit[json::json_pointer(place)] = json::parse(wish);
      EXPECT_NE(Problem(), "") << place << " " << wish;
    }
  }
}

TEST_F(AnEdit, ThatIsNotWholeIsRefused) {
  for (const char* const member : {"enabled", "readCommunity", "writeCommunity", "contact", "usePrimaryContact", "location",
                                   "useOwnerAddress", "name", "useRoomDevice", "trapTargets"}) {
    const json whole = edit;
    edit.erase(member);
    EXPECT_EQ(Problem(), "settings." + std::string(member) + " is missing");
    edit = whole;
  }
  edit["trapTargets"][1].erase("port");
  EXPECT_EQ(Problem(), "settings.trapTargets[1].port is missing");
}

TEST_F(AnEdit, ThatHasSomethingElseIsRefusedWithoutSayingIt) {
  const json whole = edit;
  const auto with = [&](const json::json_pointer& place, const json& value) {
    edit = whole;
    edit[place] = value;
    return Problem();
  };
  using Place = json::json_pointer;
  EXPECT_EQ(with(Place("/enabled"), "true"), "settings.enabled is neither true nor false");
  EXPECT_EQ(with(Place("/name"), 7), "settings.name is not a text");
  EXPECT_THAT(with(Place("/readCommunity"), "hidden6"), HasSubstr("settings.readCommunity is not an object; allowed"));
  EXPECT_THAT(with(Place("/readCommunity"), {{"keep", false}}), HasSubstr("settings.readCommunity.keep is not true"));
  EXPECT_THAT(with(Place("/readCommunity"), {{"keep", true}, {"value", "hidden7"}}), HasSubstr("not known; allowed: keep"));
  EXPECT_THAT(with(Place("/trapTargets/0/community"), {{"keep", 2U}}), HasSubstr("from 0 to 1"));
  EXPECT_THAT(with(Place("/trapTargets/0/community"), {{"keep", true}}), HasSubstr("from 0 to 1"));
  EXPECT_EQ(with(Place("/trapTargets"), json::object()), "settings.trapTargets is not a list");
  EXPECT_THAT(with(Place("/hidden8"), true), HasSubstr("settings has a member that is not known; allowed: enabled"));
  // What was typed in a wrong place is a secret all the same.
  EXPECT_EQ(secrets.Text("hidden6 hidden7"), "***** *****");
}

TEST_F(AnEdit, ThatIsEmptyMakesNoErasureOfWhatWasEmpty) {
  const DeviceAnswers merged = Merged();
  EXPECT_FALSE(merged.sysName.wasErased);
  edit["contact"] = "";
  EXPECT_TRUE(Merged().sysContact.wasErased);
}

}  // namespace
}  // namespace devhost

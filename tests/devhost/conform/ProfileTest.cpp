#include "devhost/conform/Profile.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

Profile Read(const std::string& text) {
  return ReadProfile({"kettle.xml", text});
}

std::string ErrorOf(const std::string& text) {
  try {
    Read(text);
  } catch (const ProfileError& error) {
    return error.what();
  }
  return "";
}

TEST(AProfile, GivesEachDeviceAFolderOfItsOwn) {
  EXPECT_EQ(Profile().ConfigIn("/tmp/a"), "<config folder=\"/tmp/a\"/>");
  EXPECT_EQ(Read("<conform><config a=\"{folder}\" b=\"{folder}/x\"/></conform>").ConfigIn("/f"),
            "<config a=\"/f\" b=\"/f/x\"/>");
}

TEST(AProfile, HasClaimsAndWaivers) {
  const Profile profile =
      Read("<conform><claim name=\"keeps-state\"/><waive check=\"traps-many\" reason=\"it holds 10\"/></conform>");
  EXPECT_THAT(profile.claims, testing::ElementsAre("keeps-state"));
  EXPECT_EQ(profile.waivers.at("traps-many"), "it holds 10");
}

TEST(AProfile, ThatIsWrongIsRefusedWithWhatIsAllowed) {
  EXPECT_EQ(ErrorOf("<a/>"), "kettle.xml:1: the root is \"a\"; allowed: <conform>");
  EXPECT_EQ(ErrorOf("<conform>\n<waiver/></conform>"),
            "kettle.xml:2: <waiver> is unknown; allowed: <config>, <claim>, <waive>");
  EXPECT_EQ(ErrorOf("<conform><claim name=\"fast\"/></conform>"),
            "kettle.xml:1: the claim \"fast\" is unknown; allowed: goes-off-line, keeps-state, safe-actions");
  EXPECT_EQ(ErrorOf("<conform><waive check=\"traps-lots\" reason=\"it holds 10\"/></conform>"),
            "kettle.xml:1: there is no check \"traps-lots\"; allowed: an id that devhost conform --list prints");
  EXPECT_EQ(ErrorOf("<conform><waive check=\"traps-many\"/></conform>"),
            "kettle.xml:1: <waive> has no reason; allowed: reason=\"...\"");
  EXPECT_THAT(ErrorOf("<conform>"), testing::StartsWith("kettle.xml:1: "));
}

}  // namespace
}  // namespace devhost

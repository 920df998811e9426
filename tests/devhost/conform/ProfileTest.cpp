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
  const Profile profile = Read(
      "<conform><claim name='keeps-state'/><claim name='goes-off-line' out='Go off=1' back='Come'/>"
      "<waive check='traps-many' reason='it holds 10' until='2027-06-30'/><waive check='traps-add' reason='x'/></conform>");
  EXPECT_EQ(profile.claims.size(), 2U);
  EXPECT_EQ(profile.claims.at("keeps-state").out, "");
  EXPECT_EQ(profile.claims.at("goes-off-line").out, "Go off=1");
  EXPECT_EQ(profile.claims.at("goes-off-line").back, "Come");
  EXPECT_EQ(profile.waivers.at("traps-many").reason, "it holds 10");
  EXPECT_EQ(profile.waivers.at("traps-many").until, "2027-06-30");
  EXPECT_EQ(profile.waivers.at("traps-add").until, "");
}

TEST(AProfile, ThatIsWrongIsRefusedWithWhatIsAllowed) {
  EXPECT_EQ(ErrorOf("<a/>"), "kettle.xml:1: the root is \"a\"; allowed: <conform>");
  EXPECT_EQ(ErrorOf("<conform>\n<waiver/></conform>"),
            "kettle.xml:2: <waiver> is unknown; allowed: <config>, <claim>, <waive>");
  EXPECT_EQ(ErrorOf("<conform><claim name=\"fast\"/></conform>"),
            "kettle.xml:1: the claim \"fast\" is unknown; allowed: goes-off-line, keeps-state, local-file, safe-actions, "
            "withdraws");
  EXPECT_EQ(ErrorOf("<conform><waive check=\"traps-lots\" reason=\"it holds 10\"/></conform>"),
            "kettle.xml:1: there is no check \"traps-lots\"; allowed: an id that devhost conform --list prints");
  EXPECT_EQ(ErrorOf("<conform><waive check=\"traps-many\"/></conform>"),
            "kettle.xml:1: <waive> has no reason; allowed: reason=\"...\"");
  for (const std::string day : {"", "tomorrow", "2027-6-30", "2027-06-301"}) {
    EXPECT_EQ(ErrorOf("<conform><waive check='traps-many' reason='x' until='" + day + "'/></conform>"),
              "kettle.xml:1: until is \"" + day + "\"; allowed: a day such as 2027-06-30");
  }
  EXPECT_EQ(ErrorOf("<conform><claim name='goes-off-line' out='Go'/></conform>"),
            "kettle.xml:1: <claim> has no back; allowed: back=\"...\"");
  EXPECT_THAT(ErrorOf("<conform>"), testing::StartsWith("kettle.xml:1: "));
}

}  // namespace
}  // namespace devhost

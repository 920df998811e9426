#include <gmock/gmock.h>

#include <algorithm>

#include "config/SectionMerge.h"
#include "config/SectionReader.h"
#include "config/SectionWriter.h"
#include "tests/config/HostileText.h"
#include "tests/config/ManagedDevice.h"
#include "tests/config/SectionModels.h"

namespace {

using managed_section::FixedTexts;
using managed_section::Settings;
using managed_section::Write;
using testsupport::TrapText;

const int kRounds = 5000;

Settings AnySettings(HostileText& random) {
  Settings settings;
  settings.communityRead = random.Value();
  settings.communityWrite = random.Value();
  settings.agentXTimeout = random.Value();
  settings.agentXRetries = random.Value();
  settings.sysContact = random.Value();
  settings.sysLocation = random.Value();
  settings.sysName = random.Value();
  for (unsigned int count = random.Below(4); count != 0; --count) {
    const std::string target = random.Value();
    const std::string community = random.Value();
    settings.trapTargets.emplace_back(target, community, random.Value());
  }
  return settings;
}

TEST(AMergedFile, IsWhatTheRulesSayTokenByToken) {
  HostileText random(1);
  int complete = 0;
  for (int round = 0; round != kRounds; ++round) {
    const std::string old = random.File();
    const std::string expected = section_models::Merge("NEW\n", old);
    complete += expected != "NEW\n\n" + old;
    ASSERT_EQ(managed_section::Merge("NEW\n", old), expected) << old;
  }
  EXPECT_GT(complete, kRounds / 10);
}

TEST(LinesInsideAFile, AreWhatTheRulesSayTokenByToken) {
  HostileText random(2);
  int found = 0;
  for (int round = 0; round != kRounds; ++round) {
    const std::string text = random.File();
    std::vector<std::string> lines;
    const std::string inside = managed_section::LinesInside(text);
    for (std::size_t start = 0; start < inside.size();) {
      const std::size_t end = std::min(inside.find('\n', start), inside.size());
      if (end != start) {
        lines.push_back(inside.substr(start, end - start));
      }
      start = end + 1;
    }
    const std::vector<std::string> expected = section_models::LinesInside(text);
    found += !expected.empty();
    ASSERT_EQ(lines, expected) << text;
  }
  EXPECT_GT(found, kRounds / 10);
}

TEST(TextBelowASection, IsKeptAsAByteExactSuffix) {
  HostileText random(3);
  for (int round = 0; round != kRounds; ++round) {
    const Settings settings = AnySettings(random);
    const std::string below = "\n" + random.File();
    const std::string section = Write(FixedTexts(), settings, "then");
    ASSERT_EQ(managed_section::Merge(Write(FixedTexts(), Settings(), "now"), section + below),
              Write(FixedTexts(), Settings(), "now") + below);
  }
}

TEST(AFileWrittenTwice, DiffersInTheTimeStampOnly) {
  HostileText random(4);
  for (int round = 0; round != kRounds; ++round) {
    const Settings settings = AnySettings(random);
    const std::string once = managed_section::Merge(Write(FixedTexts(), settings, "then"), random.File());
    const std::string twice = managed_section::Merge(Write(FixedTexts(), settings, "now"), once);
    std::string expected = once;
    expected.replace(FixedTexts().header.size(), 4, "now");
    ASSERT_EQ(twice, expected);
  }
}

class ADeviceWithHostileText : public ManagedDeviceTest {
 protected:
  void Start(HostileText& random) {
    model = section_models::Device();
    Start(random, model.communityRead, device.communityRead, device.communityReadErased);
    Start(random, model.communityWrite, device.communityWrite, device.communityWriteErased);
    Start(random, model.sysContact, device.sysContact, device.sysContactErased);
    Start(random, model.sysLocation, device.sysLocation, device.sysLocationErased);
    Start(random, model.sysName, device.sysName, device.sysNameErased);
    model.trapsErased = device.trapTargetsErased = random.Below(4) == 0;
    if (random.Below(4) == 0) {
      model.traps.emplace_back("held", "", "");
    }
    device.trapTargets = model.traps;
    model.agentXTimeout = random.Value();
    record->SetAgentXTimeout(model.agentXTimeout);
  }

  void ExpectAsModel(const std::string& text) {
    ASSERT_EQ(device.communityRead, model.communityRead.value) << text;
    ASSERT_EQ(device.communityWrite, model.communityWrite.value) << text;
    ASSERT_EQ(device.sysContact, model.sysContact.value) << text;
    ASSERT_EQ(device.sysLocation, model.sysLocation.value) << text;
    ASSERT_EQ(device.sysName, model.sysName.value) << text;
    ASSERT_EQ(TrapText(device.trapTargets), TrapText(model.traps)) << text;
    ASSERT_EQ(record->GetAgentXTimeout(), model.agentXTimeout) << text;
    ASSERT_EQ(record->GetAgentXRetries(), "2") << text;
  }

  section_models::Device model;

 private:
  static void Start(HostileText& random, section_models::Word& word, std::string& value, bool& erased) {
    word.value = value = random.Below(3) == 0 ? random.Value() : "";
    word.erased = erased = random.Below(4) == 0;
  }
};

TEST_F(ADeviceWithHostileText, IsFilledAsTheRulesSayTokenByToken) {
  HostileText random(5);
  int filled = 0;
  for (int round = 0; round != kRounds; ++round) {
    Start(random);
    const std::string text = random.File();
    section_models::Fill(text, model);
    record->SetConfig(text);
    agent.MergeFromConfig(record);
    filled += !Setters().empty();
    ExpectAsModel(text);
    if (HasFatalFailure()) {
      return;
    }
  }
  EXPECT_GT(filled, kRounds / 10);
}

// A device that forgets its settings again and again and takes them from its own file each time.
class AFileReadBackByAnEmptyDevice : public ManagedDeviceTest {
 protected:
  std::string Next() {
    agent.MergeToConfig(record);
    device.communityRead = device.communityWrite = device.sysContact = device.sysLocation = device.sysName = "";
    device.trapTargets.clear();
    agent.MergeFromConfig(record);
    std::string text = record->GetConfig();
    return text.erase(268, text.find('\n', 268) - 268);
  }
};

TEST_F(AFileReadBackByAnEmptyDevice, IsAFixedPointForPlainSettings) {
  device.communityRead = "public";
  device.communityWrite = "private";
  device.sysContact = "Ada  Lovelace \"first\"";
  device.sysLocation = "Attic, left";
  device.sysName = "box";
  device.trapTargets = {TrapTarget("10.0.0.5", "two words", "162"), TrapTarget("10.0.0.6", "", "")};
  record->SetConfig("below\n");
  const std::string first = Next();
  EXPECT_EQ(device.sysContact, "Ada  Lovelace \"first\"");
  EXPECT_EQ(TrapText(device.trapTargets), "10.0.0.5|two words|162 10.0.0.6||");
  EXPECT_EQ(Next(), first);
  EXPECT_EQ(Next(), first);
}

TEST_F(AFileReadBackByAnEmptyDevice, GrowsAPairOfQuotesAroundACommunityWithASpaceEachTime) {
  device.communityRead = "my community";
  device.communityWrite = "w w";
  Next();
  EXPECT_EQ(device.communityRead, "\"my community\"");
  EXPECT_EQ(device.communityWrite, "\"w w\"");
  Next();
  EXPECT_EQ(device.communityRead, "\"\"my community\"\"");
  Next();
  EXPECT_EQ(device.communityRead, "\"\"\"my community\"\"\"");
}

TEST_F(AFileReadBackByAnEmptyDevice, LetsAnUnquotedTrapCommunityAbsorbThePortOnceAndThenTrims) {
  device.trapTargets = {TrapTarget("10.0.0.5", "public", "162")};
  Next();
  EXPECT_EQ(TrapText(device.trapTargets), "10.0.0.5|  public  162|");
  Next();
  EXPECT_EQ(TrapText(device.trapTargets), "10.0.0.5|public  162|");
  const std::string settled = Next();
  EXPECT_EQ(TrapText(device.trapTargets), "10.0.0.5|public  162|");
  EXPECT_EQ(Next(), settled);
}

TEST_F(AFileReadBackByAnEmptyDevice, SettlesForAnyValuesWithoutSpacesInCommunities) {
  HostileText random(6);
  for (int round = 0; round != 500; ++round) {
    record->SetConfig("");
    record->SetAgentXTimeout(random.Value());
    device.communityRead = "r" + std::to_string(round);
    device.communityWrite = "";
    device.sysContact = random.Value();
    device.sysLocation = random.Value();
    device.sysName = random.Value();
    Next();
    Next();
    const std::string settled = Next();
    ASSERT_EQ(Next(), settled) << round;
  }
}

}  // namespace

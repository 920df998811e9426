#include "devhost/check/ReadBack.h"

#include <gtest/gtest.h>

#include "tests/devhost/check/Held.h"
#include "tests/devhost/check/RandomText.h"

namespace devhost {
namespace {

constexpr int kTexts = 20000;

TEST(ALineOfASection, IsReadBackAsTheAgentReadsIt) {
  const std::vector<std::string> pieces = {" ",           "  ",          "\t",
                                           "\"",          "\r",          "x",
                                           "two words",   "#",           "162",
                                           "h",           "sysName",     "trap2sink",
                                           "rocommunity", "rwcommunity", "agentXTimeout",
                                           "sysContact",  "sysLocation", "agentXRetries"};
  RandomText random;
  for (int count = 0; count != kTexts; ++count) {
    const std::string line = random.Next(pieces, 8);
    const ReadBack read = ReadLineBack(line);
    Held held(line);
    for (const char* keyword : {"rocommunity", "rwcommunity", "sysContact", "sysLocation", "sysName"}) {
      ASSERT_EQ(held.Value(keyword), read.keyword == keyword ? read.value : "") << testing::PrintToString(line);
    }
    const bool setsTimeout = read.keyword == "agentXTimeout" && read.sets;
    ASSERT_EQ(held.Value("agentXTimeout"), setsTimeout ? read.value : "6") << testing::PrintToString(line);
    const std::vector<TrapTarget> traps = held.device.GetTrapTargetsSetting();
    ASSERT_EQ(traps.size(), read.kind == ReadBack::Kind::Trap ? 1u : 0u) << testing::PrintToString(line);
    if (!traps.empty()) {
      ASSERT_EQ(traps[0].target + "|" + traps[0].community + "|" + traps[0].port,
                read.target + "|" + read.community + "|" + read.port)
          << testing::PrintToString(line);
    }
  }
}

TEST(ALineOfASection, LosesAKeywordThatStandsTwiceInIt) {
  const auto loses = [](const char* line) { return LosesKeyword(line, ReadLineBack(line)); };
  EXPECT_TRUE(loses("sysName  box sysName"));
  EXPECT_FALSE(loses("sysName  box sysNames"));
  EXPECT_TRUE(loses("trap2sink  h \"trap2sink\""));
  EXPECT_FALSE(loses("agentXTimeout 6 agentXTimeout"));
  EXPECT_FALSE(loses("box"));
}

}  // namespace
}  // namespace devhost

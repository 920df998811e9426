// What the rules of ValueRules.cpp find beside their examples.
#include <gtest/gtest.h>

#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

TEST(AnAgentXTimeout, IsANumberPerhapsWithAUnit) {
  for (const char* const value : {"6", "6s", "10M", "6 s"}) {
    EXPECT_TRUE(LinesFound("agentx-timeout", std::string("agentXTimeout  ") + value).empty()) << value;
  }
  for (const char* const value : {"x", "s", "6x", "-1", "0", "00s", "1 # comment", ""}) {
    EXPECT_EQ(LinesFound("agentx-timeout", std::string("agentXTimeout  ") + value).size(), 1u) << value;
  }
}

TEST(ALineThatTheDaemonRejects, IsKnown) {
  for (const std::string& line : {std::string("sysName"), std::string("sysName  #1"), "sysName  " + std::string(256, 'x'),
                                  std::string("agentXTimeout  soon")}) {
    EXPECT_TRUE(IsRejected(*ReadDirective(line))) << line;
  }
  for (const std::string& line : {std::string("sysName  a#1"), "sysName  " + std::string(255, 'x'),
                                  "master  " + std::string(256, 'x'), std::string("agentXTimeout  5")}) {
    EXPECT_FALSE(IsRejected(*ReadDirective(line))) << line;
  }
}
}  // namespace
}  // namespace devhost

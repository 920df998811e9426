// What the rules of TrapRules.cpp find beside their examples.
#include <gtest/gtest.h>

#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

TEST(ATrapPortWithoutCommunity, IsFoundWhateverNumberItIs) {
  const std::string text = "rocommunity  reader\ntrap2sink  192.0.2.5  70000\n";
  EXPECT_EQ(LinesFound("trap-port-as-community", text), std::vector<std::size_t>{2});
}

TEST(ASink, HasAHostAndThePortThatTrapsGoTo) {
  const auto key = [](const std::string& line) { return SinkKey(*ReadSink(*ReadDirective(line))); };
  EXPECT_EQ(key("trap2sink  h"), "h 162");
  EXPECT_EQ(key("trap2sink  h  c  163"), "h 163");
  EXPECT_EQ(key("informsink  udp:h:164  c"), "h 164");
  EXPECT_EQ(key("trapsink  [::1]:165"), "[::1] 165");
  EXPECT_EQ(key("trap2sink  other:166"), "other 166");
}

TEST(ASink, IsCutAtBlanksAloneAndNeverAComment) {
  const std::optional<Sink> sink = ReadSink(*ReadDirective("trap2sink  h \"two words\""));
  ASSERT_TRUE(sink);
  EXPECT_EQ(sink->words, (std::vector<std::string>{"h", "\"two", "words\""}));
  EXPECT_FALSE(ReadSink(*ReadDirective("trap2sink  #h")));
  EXPECT_FALSE(ReadSink(*ReadDirective("sysName  h")));
  EXPECT_TRUE(ReadSink(*ReadDirective("trap2sink  ::1 c 162"))->isBareAddress);
}
}  // namespace
}  // namespace devhost

#include "devhost/snmp/UdpAddress.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

std::string Read(const std::string& text) {
  const auto address = ReadUdpAddress(text, "161");
  return !address ? "nothing" : TextOf(*address) + (address->isV6 ? " by IPv6" : "");
}

TEST(AnAddress, HasTheUsualPortUnlessItNamesOne) {
  EXPECT_EQ(Read("kitchen.example"), "kitchen.example:161");
  EXPECT_EQ(Read("kitchen.example:1161"), "kitchen.example:1161");
  EXPECT_EQ(Read("192.0.2.5"), "192.0.2.5:161");
  EXPECT_EQ(Read("[2001:db8::5]"), "[2001:db8::5]:161 by IPv6");
  EXPECT_EQ(Read("[2001:db8::5]:1161"), "[2001:db8::5]:1161 by IPv6");
}

TEST(AnAddress, MayNameItsTransport) {
  EXPECT_EQ(Read("udp:192.0.2.5:1161"), "192.0.2.5:1161");
  EXPECT_EQ(Read("udp6:[::1]:1161"), "[::1]:1161 by IPv6");
  EXPECT_EQ(Read("udp6:::1"), "[::1]:161 by IPv6");
  EXPECT_EQ(Read("udp6:kitchen"), "kitchen:161 by IPv6");
}

TEST(AnAddress, IsNothingElse) {
  for (const char* text : {"", ":161", "kitchen:", "kitchen:0", "kitchen:65536", "kitchen:snmp", "::1", "[::1", "[::1]161",
                           "[]:161", "unix:/run/agentx", "/run/agentx", "two words", "tcp:192.0.2.5:161", "tcp:161"}) {
    EXPECT_EQ(Read(text), "nothing") << text;
  }
}

TEST(AnAddress, IsFoundByNumberAndByName) {
  EXPECT_EQ(Resolve({"192.0.2.5", "1161"}).value().Text(), "udp:192.0.2.5:1161");
  EXPECT_EQ(Resolve({"::1", "161", true}).value().Text(), "udp6:[::1]:161");
  EXPECT_EQ(Resolve({"localhost", "161"}).value().Text(), "udp:127.0.0.1:161");
}

TEST(AnAddress, IsNotFoundWhereTheNameIsNotKnown) {
  EXPECT_FALSE(Resolve({"192.0.2.300", "161"}).has_value());
  EXPECT_FALSE(Resolve({"::1", "161"}).has_value());
}

}  // namespace
}  // namespace devhost

#include "devhost/snmp/Discovery.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "devhost/snmp/UdpAddress.h"
#include "tests/drivers/support/SnmpResponder.h"
#include "tests/e2e/TrapReceiver.h"

namespace devhost {
namespace {

const std::chrono::milliseconds kLong(30000);

// A port of 127.0.0.1 that nobody has.
class ADiscovery : public testing::Test {
 protected:
  std::uint16_t Number() const { return static_cast<std::uint16_t>(std::stoul(port)); }
  Discovery Make() const {
    const SocketAddress address = Resolve({"127.0.0.1", port}).value();
    return Discovery(address.Get(), address.size);
  }

  const std::string port = e2e::FreePort();
};

TEST_F(ADiscovery, HearsTheReportOfAnEngine) {
  const SnmpResponder engine(Number(), SnmpResponder::Report());
  EXPECT_EQ(Make().Ask(kLong), UdpEnd::Answered);
}

TEST_F(ADiscovery, TakesNothingElseForAReport) {
  const std::string report = SnmpResponder::Report();
  std::string otherMessage = report;
  otherMessage[10] = 'x';
  std::string otherVersion = report;
  otherVersion[4] = 1;
  for (const std::string& answer : {std::string("hello"), std::string(1, '\x30'), report.substr(0, 10), otherMessage,
                                    otherVersion, "x" + report, std::string(3, '\x30') + std::string(100, '\xff')}) {
    const SnmpResponder engine(Number(), answer);
    EXPECT_EQ(Make().Ask(kLong), UdpEnd::Silent);
  }
}

TEST_F(ADiscovery, UnderstandsALongForm) {
  const std::string report = SnmpResponder::Report();
  const SnmpResponder engine(Number(), std::string("\x30\x82\x00", 3) + report.substr(1));
  EXPECT_EQ(Make().Ask(kLong), UdpEnd::Answered);
}

TEST_F(ADiscovery, HearsThatNobodyHasThePort) {
  const Discovery discovery = Make();
  EXPECT_EQ(discovery.Ask(kLong), UdpEnd::Refused);
  const SnmpResponder engine(Number(), SnmpResponder::Report());
  EXPECT_TRUE(discovery.Ask(kLong) == UdpEnd::Answered || discovery.Ask(kLong) == UdpEnd::Answered);
}

TEST_F(ADiscovery, StopsWaitingForAnEngineThatSaysNothing) {
  const SnmpResponder engine(Number(), "");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Make().Ask(std::chrono::milliseconds(1)), UdpEnd::Silent);
  EXPECT_LT(std::chrono::steady_clock::now() - start, kLong);
}

TEST(AnErrorOfASocket, SaysWhatHasBecomeOfADatagram) {
  EXPECT_EQ(EndOf(0), UdpEnd::Silent);
  EXPECT_EQ(EndOf(ECONNREFUSED), UdpEnd::Refused);
  EXPECT_EQ(EndOf(EHOSTUNREACH), UdpEnd::NoRoute);
  EXPECT_EQ(EndOf(ENETUNREACH), UdpEnd::NoRoute);
  EXPECT_EQ(EndOf(EPERM), UdpEnd::Failed);
}

}  // namespace
}  // namespace devhost

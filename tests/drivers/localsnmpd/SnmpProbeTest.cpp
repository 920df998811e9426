#include "drivers/localsnmpd/SnmpProbe.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "drivers/localsnmpd/PortReservation.h"
#include "tests/drivers/support/SnmpResponder.h"

namespace {

using drivers::IsUdpPortFree;
using drivers::OwnsUdpPort;
using drivers::PortReservation;
using drivers::SnmpProbe;

const std::chrono::milliseconds kLong(30000);

TEST(ASnmpProbe, HearsTheReportOfAnEngine) {
  const PortReservation port;
  const SnmpResponder engine(port.GetPort(), SnmpResponder::Report());
  EXPECT_TRUE(SnmpProbe(port.GetPort()).Ask(kLong));
}

TEST(ASnmpProbe, TakesNothingElseForAReport) {
  const std::string report = SnmpResponder::Report();
  std::string otherMessage = report;
  otherMessage[10] = 'x';
  std::string otherVersion = report;
  otherVersion[4] = 1;
  for (const std::string& answer : {std::string("hello"), std::string(1, '\x30'), report.substr(0, 10), otherMessage,
                                    otherVersion, "x" + report, std::string(3, '\x30') + std::string(100, '\xff')}) {
    const PortReservation port;
    const SnmpResponder engine(port.GetPort(), answer);
    EXPECT_FALSE(SnmpProbe(port.GetPort()).Ask(kLong));
  }
}

TEST(ASnmpProbe, UnderstandsALongForm) {
  const PortReservation port;
  const std::string report = SnmpResponder::Report();
  const SnmpResponder engine(port.GetPort(), std::string("\x30\x82\x00", 3) + report.substr(1));
  EXPECT_TRUE(SnmpProbe(port.GetPort()).Ask(kLong));
}

TEST(ASnmpProbe, ComesBackWhereNobodyAnswers) {
  const PortReservation port;
  const SnmpProbe probe(port.GetPort());
  EXPECT_FALSE(probe.Ask(kLong));
  EXPECT_FALSE(probe.Ask(kLong));
  const SnmpResponder engine(port.GetPort(), SnmpResponder::Report());
  EXPECT_TRUE(probe.Ask(kLong) || probe.Ask(kLong));
}

TEST(AnUdpPort, IsOwnedByTheProcessThatBoundIt) {
  const PortReservation port;
  EXPECT_FALSE(OwnsUdpPort(::getpid(), port.GetPort()));
  const SnmpResponder engine(port.GetPort(), "");
  EXPECT_TRUE(OwnsUdpPort(::getpid(), port.GetPort()));
  EXPECT_FALSE(OwnsUdpPort(::getppid(), port.GetPort()));
  EXPECT_FALSE(OwnsUdpPort(-1, port.GetPort()));
  const PortReservation other;
  EXPECT_FALSE(OwnsUdpPort(::getpid(), other.GetPort()));
}

TEST(AnUdpPort, IsFreeUntilSomebodyHasIt) {
  const PortReservation port;
  EXPECT_TRUE(IsUdpPortFree(port.GetPort()));
  const SnmpResponder engine(port.GetPort(), "");
  EXPECT_FALSE(IsUdpPortFree(port.GetPort()));
}

}  // namespace

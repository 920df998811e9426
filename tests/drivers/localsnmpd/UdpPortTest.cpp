#include "drivers/localsnmpd/UdpPort.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "drivers/localsnmpd/PortReservation.h"
#include "tests/drivers/support/SnmpResponder.h"

namespace {

using drivers::IsUdpPortFree;
using drivers::OwnsUdpPort;
using drivers::PortReservation;

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

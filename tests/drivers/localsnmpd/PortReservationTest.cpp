#include "drivers/localsnmpd/PortReservation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <vector>

namespace {

using drivers::PortReservation;

TEST(APortReservation, IsFreeUnprivilegedAndNobodyElses) {
  const PortReservation one;
  const PortReservation other;
  EXPECT_GE(one.GetPort(), 1024);
  EXPECT_GE(other.GetPort(), 1024);
  EXPECT_NE(one.GetPort(), other.GetPort());
}

TEST(APortReservation, PassesOverPortsThatOthersReserved) {
  // So many that chance does not keep them apart.
  std::vector<PortReservation> all;
  std::set<std::uint16_t> ports;
  for (int number = 0; number < 500; ++number) {
    all.emplace_back();
    ports.insert(all.back().GetPort());
  }
  EXPECT_EQ(500U, ports.size());
}

}  // namespace

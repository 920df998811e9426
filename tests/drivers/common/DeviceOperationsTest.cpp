#include "drivers/common/DeviceOperations.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using drivers::DeviceOperation;
using drivers::DeviceOperations;

TEST(AnOperation, GoesThroughAndIsCounted) {
  DeviceOperations operations;
  EXPECT_EQ(0UL, operations.Count(DeviceOperation::CopyTo));
  EXPECT_EQ(0, operations.Begin(DeviceOperation::CopyTo));
  EXPECT_EQ(0, operations.Begin(DeviceOperation::CopyTo));
  EXPECT_EQ(2UL, operations.Count(DeviceOperation::CopyTo));
  EXPECT_EQ(0UL, operations.Count(DeviceOperation::CopyFrom));
}

TEST(AFailingOperation, FailsAsOftenAsAskedAndIsCountedAllTheSame) {
  DeviceOperations operations;
  operations.Fail(DeviceOperation::CopyTo, -9, 2UL);
  EXPECT_EQ(-9, operations.Begin(DeviceOperation::CopyTo));
  EXPECT_EQ(0, operations.Begin(DeviceOperation::CopyFrom));
  EXPECT_EQ(-9, operations.Begin(DeviceOperation::CopyTo));
  EXPECT_EQ(0, operations.Begin(DeviceOperation::CopyTo));
  EXPECT_EQ(3UL, operations.Count(DeviceOperation::CopyTo));
}

TEST(AFailingOperation, FailsUntilAskedOtherwise) {
  DeviceOperations operations;
  operations.Fail(DeviceOperation::RebootController, 7, std::nullopt);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(7, operations.Begin(DeviceOperation::RebootController));
  }
  operations.Fail(DeviceOperation::RebootController, 0, std::nullopt);
  EXPECT_EQ(0, operations.Begin(DeviceOperation::RebootController));
}

TEST(AFailingOperation, TakesTheLastOrder) {
  DeviceOperations operations;
  operations.Fail(DeviceOperation::StopMasterAgent, 1, 1UL);
  operations.Fail(DeviceOperation::StopMasterAgent, 2, std::nullopt);
  EXPECT_EQ(2, operations.Begin(DeviceOperation::StopMasterAgent));
  EXPECT_EQ(2, operations.Begin(DeviceOperation::StopMasterAgent));
  operations.Fail(DeviceOperation::StopMasterAgent, 3, 1UL);
  EXPECT_EQ(3, operations.Begin(DeviceOperation::StopMasterAgent));
  EXPECT_EQ(0, operations.Begin(DeviceOperation::StopMasterAgent));
}

TEST(AnOperation, IsFoundByItsExactName) {
  for (const DeviceOperation operation : drivers::kDeviceOperations) {
    EXPECT_EQ(operation, drivers::OperationNamed(drivers::NameOf(operation)));
  }
  EXPECT_EQ(std::nullopt, drivers::OperationNamed("copyto"));
  EXPECT_EQ(std::nullopt, drivers::OperationNamed(""));
}

}  // namespace

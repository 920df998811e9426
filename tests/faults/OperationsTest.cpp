// Runs each operation of the agent with each kind of fault at each place.
#include <gmock/gmock.h>

#include <string>
#include <tuple>

#include "tests/faults/Sweep.h"

namespace {

using faults::FaultKind;
using faults::Operation;

class AnOperation : public testing::TestWithParam<std::tuple<Operation, FaultKind>> {};

TEST_P(AnOperation, LosesNothingWhereverAFaultStrikes) {
  const Operation& operation = std::get<0>(GetParam());
  const FaultKind& kind = std::get<1>(GetParam());
  const faults::SweepResult result = faults::Sweep(operation, kind);
  EXPECT_THAT(result.complaints, testing::IsEmpty()) << operation.name << ", " << kind.name;
  EXPECT_GT(result.faults, 0U) << operation.name << ", " << kind.name;
}

INSTANTIATE_TEST_SUITE_P(Faults, AnOperation,
                         testing::Combine(testing::ValuesIn(faults::Operations()), testing::ValuesIn(faults::kFaultKinds)),
                         [](const testing::TestParamInfo<AnOperation::ParamType>& each) {
                           return std::string(std::get<0>(each.param).name) + "_" + std::get<1>(each.param).name;
                         });

}  // namespace

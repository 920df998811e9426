// The last step of construction makes the fixed texts. It calls nothing outside, so only memory can fail.
#include <gmock/gmock.h>

#include "tests/faults/Faults.h"
#include "tests/faults/Operations.h"

namespace {

TEST(TheLastStepOfConstruction, TakesAllListenersBackWhenMemoryFails) {
  const std::vector<std::string> all = {
      "BaseConstructed 0",      "GetVariableManager",      "RegisterListener 34 0",   "RegisterListener 35 0",
      "RegisterListener 36 0",  "RegisterListener 5 0",    "RegisterListener 11 0",   "UnregisterListener 11 0",
      "UnregisterListener 5 0", "UnregisterListener 36 0", "UnregisterListener 35 0", "UnregisterListener 34 0",
      "BaseDestroyed"};
  int failedInTheLastStep = 0;
  for (unsigned int k = 1;; ++k) {
    faults::World world(faults::Stage::NoAgent);
    faults::Faults faults(faults::kFaultKinds[0], k);
    faults.Run(world.journal, [&world] { faults::OperationOf("Create").run(world); });
    if (faults.Thrown() == 0) {
      break;
    }
    EXPECT_THAT(world.host.Listeners(), testing::IsEmpty()) << "k = " << k;
    failedInTheLastStep += world.journal.Calls() == all ? 1 : 0;
  }
  // There is one allocation for each of the seven texts.
  EXPECT_GE(failedInTheLastStep, 7);
}

}  // namespace

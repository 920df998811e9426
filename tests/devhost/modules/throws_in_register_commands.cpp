#include <stdexcept>

#include "host/H7BaseAgentDriver.h"
#include "tests/devhost/modules/TestModule.h"

namespace {

class ThrowsInRegisterCommands : public H7BaseAgentDriver {
 public:
  explicit ThrowsInRegisterCommands(IInstanceManager& instanceManager)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single) {}
  void RegisterCommands() override { throw std::runtime_error("no commands today"); }
};

}  // namespace

TEST_MODULE(ThrowsInRegisterCommands);

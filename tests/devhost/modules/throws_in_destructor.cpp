#include <stdexcept>

#include "host/H7BaseAgentDriver.h"
#include "tests/devhost/modules/TestModule.h"

namespace {

void Fail() {
  throw std::runtime_error("not yet");
}

class ThrowsInDestructor : public H7BaseAgentDriver {
 public:
  explicit ThrowsInDestructor(IInstanceManager& instanceManager)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single) {}
  ~ThrowsInDestructor() override { Fail(); }
};

}  // namespace

TEST_MODULE(ThrowsInDestructor);

// The bodies of the driver bases do nothing but pass on: seen with services that record.
#include <gmock/gmock.h>

#include <stdexcept>

#include "devhost/driver/DriverServices.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISystemEventCallback.h"
#include "host/UICmdDispatcher.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecordingServices : public DriverServices, public IInstanceManager, public IDriverManager, public UICmdDispatcher {
 public:
  void BaseConstructed(H7BaseDriver&, DriverMultiplicity multiplicity) override {
    calls.push_back("constructed " + std::to_string(multiplicity));
    if (refuse) {
      throw std::runtime_error("refused");
    }
  }
  void BaseInitialized(unsigned long driverId) override { calls.push_back("initialized " + std::to_string(driverId)); }
  void BaseDestroyed() noexcept override { calls.push_back("destroyed"); }
  IInstanceManager& GetInstanceManager() override { return *this; }
  IDriverManager& GetDriverManager() override { return *this; }
  IVariableManager* GetVariableManager() override { return nullptr; }
  UICmdDispatcher& GetUICmdDispatcher() override { return *this; }
  void RegisterListener(ISystemEventCallback&, unsigned int eventId, unsigned long reserved) override {
    calls.push_back("listen " + std::to_string(eventId) + " " + std::to_string(reserved));
  }
  void UnregisterListener(ISystemEventCallback&, unsigned int eventId, unsigned long reserved) override {
    calls.push_back("unlisten " + std::to_string(eventId) + " " + std::to_string(reserved));
  }
  void SendDataToUI(const H7XML::INode& data) override { calls.push_back("send " + data.GetName()); }
  void InvalidateState() override { calls.push_back("invalidate"); }

  bool RegisterQuery(const char*, void*) override { return false; }
  void UnregisterQuery(const char*) override {}
  void* Query(const char* iid) override {
    calls.push_back(std::string("query ") + iid);
    return known ? static_cast<DriverServices*>(this) : nullptr;
  }
  void FindDrivers(unsigned long, const char*, std::vector<void*>&) override {}
  void RegisterUICmd(const std::string&, boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)>) override {}

  std::vector<std::string> calls;
  bool known = true;
  bool refuse = false;
};

class TestDriver : public H7BaseAgentDriver, public ISystemEventCallback {
 public:
  explicit TestDriver(IInstanceManager& manager) : H7BaseAgentDriver(manager, DriverMultiplicity_PerDevice) {}
  void OnSystemEvent(H7XML::INode&) override {}
  using H7BaseDriver::ConSendDataToUI;
  using H7BaseDriver::DmInvalidateState;
  using H7BaseDriver::GetDriverManager;
  using H7BaseDriver::GetInstanceManager;
  using H7BaseDriver::GetUICmdDispatcher;
  using H7BaseDriver::GetVariableManager;
  using H7BaseDriver::RegisterListener;
  using H7BaseDriver::UnregisterListener;
};

TEST(ADriverBase, PassesEverythingOnToItsServices) {
  RecordingServices services;
  {
    TestDriver driver(services);
    const h7::auto_com<H7XML::INode> node = H7XML::CreateXmlNode("n", "");
    EXPECT_EQ(driver.Initialize(9, *node, nullptr), 0);
    EXPECT_FALSE(driver.GetPersistState(0));
    driver.RegisterCommands();
    driver.RegisterListener(driver, 34, 0);
    driver.UnregisterListener(driver, 34, 0);
    driver.ConSendDataToUI(*node);
    driver.DmInvalidateState();
    EXPECT_EQ(&driver.GetInstanceManager(), static_cast<IInstanceManager*>(&services));
    EXPECT_EQ(&driver.GetDriverManager(), static_cast<IDriverManager*>(&services));
    EXPECT_EQ(&driver.GetUICmdDispatcher(), static_cast<UICmdDispatcher*>(&services));
    EXPECT_EQ(driver.GetVariableManager(), nullptr);
  }
  EXPECT_THAT(services.calls, ElementsAre("query devhost.DriverServices", "constructed 1", "initialized 9", "listen 34 0",
                                          "unlisten 34 0", "send n", "invalidate", "destroyed"));
}

TEST(ADriverBase, IsDestroyedThroughTheInterfaceThatIsNotItsFirstAddress) {
  RecordingServices services;
  TestDriver* const driver = new TestDriver(services);
  IDriver* const interface = driver;
  EXPECT_NE(static_cast<void*>(interface), static_cast<void*>(driver));
  services.calls.clear();
  delete interface;
  EXPECT_THAT(services.calls, ElementsAre("destroyed"));
}

TEST(ADriverBase, IsNotMadeWithAManagerThatHasNoServices) {
  RecordingServices services;
  services.known = false;
  EXPECT_THROW(TestDriver driver(services), std::logic_error);
}

TEST(ADriverBase, LetsExceptionsOfTheServicesThrough) {
  RecordingServices services;
  services.refuse = true;
  EXPECT_THROW(TestDriver driver(services), std::runtime_error);
  EXPECT_THAT(services.calls, ElementsAre("query devhost.DriverServices", "constructed 1"));
}

}  // namespace
}  // namespace devhost

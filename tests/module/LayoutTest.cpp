// Tests the binary contract of the agent's class: bases, members, virtual table.

#include <gmock/gmock.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

#include "devhost/xml/XmlObserver.h"
#include "device/SNMPDevice.h"
#include "host/H7XML.h"
#include "host/IDriver.h"
#include "tests/support/AgentAccess.h"
#include "tests/support/RecordingDevice.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/Slots.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testsupport::CallSlot;
using testsupport::SlotOf;
using testsupport::TableOf;
using Access = SNMPConfigurationAgentTestAccess;

class TheAgentsClass : public testing::Test {
 protected:
  ~TheAgentsClass() override {
    hosted.Destroy();
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  }

  std::ptrdiff_t OffsetOf(const void* part) const {
    return static_cast<const char*>(part) - static_cast<const char*>(static_cast<const void*>(&agent));
  }

  Journal journal;
  RecordingHost host{journal};
  HostedAgent hosted{host};
  SNMPConfigurationAgent& agent = hosted.Agent();
};

TEST_F(TheAgentsClass, HasItsBasesInOrder) {
  const std::ptrdiff_t driver = OffsetOf(static_cast<IDriver*>(&agent));
  const std::ptrdiff_t published = OffsetOf(static_cast<ISNMPConfigurationAgent*>(&agent));
  const std::ptrdiff_t listener = OffsetOf(static_cast<ISystemEventCallback*>(&agent));
  EXPECT_EQ(OffsetOf(static_cast<H7BaseDriver*>(&agent)), 0);
  EXPECT_EQ(OffsetOf(static_cast<H7BaseAgentDriver*>(&agent)), 0);
  EXPECT_EQ(driver, static_cast<std::ptrdiff_t>(sizeof(H7BaseDriver)));
  EXPECT_EQ(published, static_cast<std::ptrdiff_t>(sizeof(H7BaseAgentDriver)));
  EXPECT_EQ(listener, published + static_cast<std::ptrdiff_t>(sizeof(void*)));
}

TEST_F(TheAgentsClass, HasItsMembersInOrderWithNothingBetween) {
  const Access access(agent);
  const std::ptrdiff_t word = sizeof(void*);
  std::ptrdiff_t next = OffsetOf(static_cast<ISystemEventCallback*>(&agent)) + word;
  EXPECT_EQ(OffsetOf(&access.devices), next);
  next += static_cast<std::ptrdiff_t>(sizeof(DeviceMap));
  EXPECT_EQ(OffsetOf(access.registererAddress), next);
  next += word;
  // The next member is a reference to the instance manager.
  const void* manager;
  std::memcpy(&manager, static_cast<const char*>(static_cast<const void*>(&agent)) + next, sizeof manager);
  EXPECT_EQ(manager, static_cast<const void*>(&host.Instances()));
  next += word;
  EXPECT_EQ(OffsetOf(&access.variableManager), next);
  next += word;
  const managed_section::Texts& texts = access.sectionTexts;
  for (const std::string* text : {&texts.header, &texts.accessControl, &texts.agentMode, &texts.hostMonitoring,
                                  &texts.systemInformation, &texts.trapDestinations, &texts.trailer}) {
    EXPECT_EQ(OffsetOf(text), next);
    next += static_cast<std::ptrdiff_t>(sizeof(std::string));
  }
  for (const void* map : {static_cast<const void*>(&access.deviceVariables), static_cast<const void*>(&access.userVariables),
                          static_cast<const void*>(&access.savedTrapFlags)}) {
    EXPECT_EQ(OffsetOf(map), next);
    next += static_cast<std::ptrdiff_t>(sizeof(VariableMap));
  }
  EXPECT_EQ(static_cast<std::ptrdiff_t>(sizeof(SNMPConfigurationAgent)), next);
}

TEST_F(TheAgentsClass, HasItsTableInOrder) {
  // The first two entries belong to the destructor.
  EXPECT_EQ(SlotOf(&SNMPConfigurationAgent::Initialize), 2U);
  EXPECT_EQ(SlotOf(&SNMPConfigurationAgent::GetPersistState), 3U);
  EXPECT_EQ(SlotOf(&SNMPConfigurationAgent::RegisterCommands), 4U);
  EXPECT_EQ(SlotOf(&SNMPConfigurationAgent::AddSNMPDevice), 5U);
  EXPECT_EQ(SlotOf(&SNMPConfigurationAgent::DeleteSNMPDevice), 6U);
  EXPECT_EQ(SlotOf(&SNMPConfigurationAgent::SetDeviceState), 7U);
  EXPECT_EQ(SlotOf(&SNMPConfigurationAgent::OnSystemEvent), 8U);
}

// Behind the last slot stands the head of the next base's table: the offset to the object, and the object's type.
TEST_F(TheAgentsClass, HasNothingElseInItsTable) {
  void* const* const table = TableOf(&agent);
  EXPECT_EQ(reinterpret_cast<std::intptr_t>(table[-2]), 0);
  EXPECT_EQ(reinterpret_cast<std::intptr_t>(table[9]), -OffsetOf(static_cast<IDriver*>(&agent)));
  EXPECT_EQ(table[10], table[-1]);
}

TEST_F(TheAgentsClass, IsHandedOutAsTheViewsThatWereAgreed) {
  hosted.Initialize();
  const std::ptrdiff_t word = sizeof(void*);
  const std::ptrdiff_t driver = sizeof(H7BaseDriver);
  EXPECT_EQ(OffsetOf(&hosted.Driver()), driver);
  EXPECT_EQ(OffsetOf(host.Published(ISNMPConfigurationAgent_IID)), driver + word);
  ASSERT_EQ(host.Listeners().size(), 5U);
  for (const RecordingHost::Listener& listener : host.Listeners()) {
    EXPECT_EQ(OffsetOf(listener.callback), driver + 2 * word) << listener.eventId;
  }
}

// Each slot of a table does the same, through whichever view it is called.
class TheAgentsTables : public TheAgentsClass {
 protected:
  void ExpectLife(const void* view, std::size_t first) {
    const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", "");
    journal.Take();
    EXPECT_EQ((CallSlot<int(unsigned long, H7XML::INode&, H7XML::INode*)>(view, first, 4294967295UL, *config, nullptr)), 0);
    EXPECT_EQ(journal.Take().front(), "BaseInitialized 4294967295");
    const auto state = CallSlot<h7::auto_com<H7XML::INode>(unsigned long)>(view, first + 1, 0UL);
    ASSERT_TRUE(state);
    EXPECT_EQ(state->GetName(), "SNMPState");
    journal.Take();
    CallSlot<void()>(view, first + 2);
    EXPECT_THAT(journal.Take(), Contains("RegisterUICmd StartMasterAgent"));
  }

  void ExpectRegistry(const void* view, std::size_t first) {
    const Access access(agent);
    testsupport::RecordingDevice device(4294967295UL, journal);
    CallSlot<void(unsigned long, ISupportSNMP*)>(view, first, 4294967295UL, &device);
    ASSERT_EQ(access.devices.count(4294967295UL), 1U);
    EXPECT_TRUE(CallSlot<bool(unsigned long)>(view, first + 2, 4294967295UL));
    EXPECT_NE(device.file, "");
    CallSlot<void(unsigned long)>(view, first + 1, 4294967295UL);
    EXPECT_EQ(access.devices.size(), 0U);
    EXPECT_FALSE(CallSlot<bool(unsigned long)>(view, first + 2, 4294967295UL));
  }

  void ExpectEvents(const void* view, std::size_t slot) {
    const h7::auto_com<H7XML::INode> event = H7XML::CreateXmlNode("event", "");
    event->SetNamedString("name", "OnProjectLoaded");
    journal.Take();
    CallSlot<void(H7XML::INode&)>(view, slot, *event);
    EXPECT_THAT(journal.Take(), ElementsAre("ListVariables true", "ListVariables false"));
  }
};

TEST_F(TheAgentsTables, RunItsLife) {
  ExpectLife(&agent, 2);
  ExpectLife(static_cast<IDriver*>(&agent), 2);
}

TEST_F(TheAgentsTables, RunItsRegistry) {
  ExpectRegistry(&agent, 5);
  ExpectRegistry(static_cast<ISNMPConfigurationAgent*>(&agent), 0);
}

TEST_F(TheAgentsTables, RunItsEvents) {
  ExpectEvents(&agent, 8);
  ExpectEvents(static_cast<ISystemEventCallback*>(&agent), 0);
}

// In a table with a destructor, slot 0 destroys, and slot 1 also frees the memory.
TEST_F(TheAgentsTables, DestroyThroughTheirFirstTwoSlots) {
  const bool throughDriver[] = {false, true};
  for (const bool driver : throughDriver) {
    SNMPConfigurationAgent* const freed = new SNMPConfigurationAgent(host.Instances());
    journal.Take();
    CallSlot<void()>(driver ? static_cast<const void*>(static_cast<IDriver*>(freed)) : freed, 1);
    EXPECT_EQ(journal.Take().back(), "BaseDestroyed");

    void* const memory = ::operator new(sizeof(SNMPConfigurationAgent));
    SNMPConfigurationAgent* const kept = new (memory) SNMPConfigurationAgent(host.Instances());
    journal.Take();
    CallSlot<void()>(driver ? static_cast<const void*>(static_cast<IDriver*>(kept)) : kept, 0);
    EXPECT_EQ(journal.Take().back(), "BaseDestroyed");
    ::operator delete(memory);
  }
}

}  // namespace

// The layouts of the smaller classes.
struct SNMPDeviceTestAccess {
  static void ExpectOrder(const SNMPDevice& device) {
    const char* const start = reinterpret_cast<const char*>(&device);
    std::size_t next = 0;
    ExpectNext(start, next, device.m_device);
    ExpectNext(start, next, device.m_deviceId);
    ExpectNext(start, next, device.m_agentXTimeout);
    ExpectNext(start, next, device.m_agentXRetries);
    ExpectNext(start, next, device.m_config);
    EXPECT_EQ(next, sizeof(SNMPDevice));
  }

  template <class Part>
  static void ExpectNext(const char* start, std::size_t& next, const Part& part) {
    EXPECT_EQ(reinterpret_cast<const char*>(&part), start + next);
    next += sizeof part;
  }
};

namespace {

TEST(TheRecordOfADevice, HasItsMembersInOrderAndNoTable) {
  Journal journal;
  testsupport::RecordingDevice device(7, journal);
  SNMPDeviceTestAccess::ExpectOrder(SNMPDevice(7, &device));
  EXPECT_FALSE(std::is_polymorphic<SNMPDevice>::value);
}

TEST(ATrapTarget, IsItsThreeTextsInOrder) {
  const TrapTarget target("a", "b", "c");
  const std::string* const texts = reinterpret_cast<const std::string*>(&target);
  EXPECT_EQ(&target.target, texts);
  EXPECT_EQ(&target.community, texts + 1);
  EXPECT_EQ(&target.port, texts + 2);
  EXPECT_EQ(sizeof target, 3 * sizeof(std::string));
  EXPECT_FALSE(std::is_polymorphic<TrapTarget>::value);
}

TEST(ThePublication, IsTheManagerAndTheNames) {
  EXPECT_EQ(sizeof(AutoQueryInstanceRegisterer), sizeof(void*) + sizeof(std::vector<std::string>));
  EXPECT_FALSE(std::is_polymorphic<AutoQueryInstanceRegisterer>::value);
}

}  // namespace

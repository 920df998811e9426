// The binary contract of the agent's class: bases, members, virtual table.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "devhost/xml/XmlObserver.h"
#include "host/H7XML.h"
#include "host/IDriver.h"
#include "tests/support/AgentAccess.h"
#include "tests/support/RecordingDevice.h"
#include "tests/support/RecordingHost.h"

namespace {

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

  // The entry of the object's own table, which its first word points to.
  void* Slot(std::size_t number) const {
    void** table;
    std::memcpy(&table, static_cast<const void*>(&agent), sizeof table);
    return table[number];
  }

  Journal journal;
  RecordingHost host{journal};
  HostedAgent hosted{host};
  SNMPConfigurationAgent& agent = hosted.Agent();
};

// Where a virtual member function stands in the table, as a pointer to it says.
template <class Member>
std::size_t SlotNumber(Member member) {
  std::ptrdiff_t parts[2];
  static_assert(sizeof member == sizeof parts, "a pointer to a member function has two parts");
  std::memcpy(parts, &member, sizeof parts);
  EXPECT_EQ(parts[0] % 2, 1) << "not virtual";
  EXPECT_EQ(parts[1], 0) << "not in the class's own table";
  return static_cast<std::size_t>(parts[0] - 1) / sizeof(void*);
}

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
  // The instance manager, a reference.
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
  // The two first entries are the destructor's.
  EXPECT_EQ(SlotNumber(&SNMPConfigurationAgent::Initialize), 2U);
  EXPECT_EQ(SlotNumber(&SNMPConfigurationAgent::GetPersistState), 3U);
  EXPECT_EQ(SlotNumber(&SNMPConfigurationAgent::RegisterCommands), 4U);
  EXPECT_EQ(SlotNumber(&SNMPConfigurationAgent::AddSNMPDevice), 5U);
  EXPECT_EQ(SlotNumber(&SNMPConfigurationAgent::DeleteSNMPDevice), 6U);
  EXPECT_EQ(SlotNumber(&SNMPConfigurationAgent::SetDeviceState), 7U);
  EXPECT_EQ(SlotNumber(&SNMPConfigurationAgent::OnSystemEvent), 8U);
}

// Calls through the object's own table, as a caller built elsewhere would. The sanitizer cannot see that the types agree.
template <class Result, class... Arguments>
__attribute__((no_sanitize("undefined"))) Result CallSlot(void* slot, void* object, Arguments... arguments) {
  Result (*function)(void*, Arguments...);
  std::memcpy(&function, &slot, sizeof function);
  return function(object, arguments...);
}

TEST_F(TheAgentsClass, CanBeCalledThroughItsTable) {
  const Access access(agent);
  testsupport::RecordingDevice device(7, journal);
  CallSlot<void, unsigned long, ISupportSNMP*>(Slot(5), &agent, 7UL, &device);
  EXPECT_EQ(access.devices.count(7), 1U);
  EXPECT_TRUE((CallSlot<bool, unsigned long>(Slot(7), &agent, 7UL)));
  EXPECT_NE(device.file, "");
  CallSlot<void, unsigned long>(Slot(6), &agent, 7UL);
  EXPECT_EQ(access.devices.count(7), 0U);
  EXPECT_FALSE((CallSlot<bool, unsigned long>(Slot(7), &agent, 7UL)));

  journal.Take();
  const h7::auto_com<H7XML::INode> event = H7XML::CreateXmlNode("event", "");
  event->SetNamedString("name", "OnProjectLoaded");
  CallSlot<void, H7XML::INode*>(Slot(8), &agent, event.Get());
  EXPECT_EQ(journal.Take().size(), 2U) << "both variable lists";
  CallSlot<void>(Slot(4), &agent);
  EXPECT_NE(journal.Take().size(), 0U) << "commands";
}

}  // namespace

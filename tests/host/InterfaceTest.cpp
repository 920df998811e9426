// The interfaces of host/ are binary contracts. The tests check the slot of each operation, that there are no other slots,
// and which interfaces can be deleted through.
#include <gmock/gmock.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <type_traits>

#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/IDocument.h"
#include "host/IDriver.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/INode.h"
#include "host/INodeList.h"
#include "host/ISupportSNMP.h"
#include "host/ISystemEventCallback.h"
#include "host/IVariable.h"
#include "host/IVariableManager.h"
#include "host/ToString.h"
#include "host/UICmdDispatcher.h"
#include "tests/support/Slots.h"

namespace {

using testsupport::SlotOf;

// The number of slots of a table is the slot of the first operation that a derived class adds.
template <class Interface>
class Extended : public Interface {
 public:
  virtual void Added() = 0;

 protected:
  ~Extended() = default;
};

template <class Interface>
std::size_t SlotCount() {
  return SlotOf(&Extended<Interface>::Added);
}

template <class Interface, class... Members>
void ExpectSlots(Members... members) {
  const std::vector<std::size_t> slots = {SlotOf(members)...};
  for (std::size_t i = 0; i != slots.size(); ++i) {
    EXPECT_EQ(slots[i], i) << "operation " << i + 1;
  }
  EXPECT_EQ(SlotCount<Interface>(), slots.size());
  EXPECT_FALSE(std::is_destructible<Interface>::value);
  EXPECT_FALSE(std::has_virtual_destructor<Interface>::value);
}

TEST(TheSlots, OfINodeStandAsWritten) {
  using H7XML::INode;
  ExpectSlots<INode>(&INode::AddRef, &INode::Release, &INode::GetName, &INode::SetName, &INode::GetValue, &INode::SetValue,
                     &INode::GetValueULong, &INode::GetNamedString, &INode::GetNamedULong, &INode::GetNamedBool,
                     &INode::SetNamedString, &INode::SetNamedULong, &INode::AddChildString, &INode::AddChildInt,
                     &INode::GetChildString, &INode::GetChildULong, &INode::GetChildBool, &INode::GetChild,
                     &INode::GetChildren, &INode::AppendChild);
}

TEST(TheSlots, OfINodeListStandAsWritten) {
  using H7XML::INodeList;
  ExpectSlots<INodeList>(&INodeList::AddRef, &INodeList::Release, &INodeList::First, &INodeList::Next);
}

TEST(TheSlots, OfIDocumentStandAsWritten) {
  using H7XML::IDocument;
  ExpectSlots<IDocument>(&IDocument::AddRef, &IDocument::Release, &IDocument::GetRootElement);
}

TEST(TheSlots, OfICmdMessageStandAsWritten) {
  ExpectSlots<ICmdMessage>(&ICmdMessage::GetString, &ICmdMessage::GetULong, &ICmdMessage::Has);
}

TEST(TheSlots, OfTheManagersStandAsWritten) {
  ExpectSlots<IDriverManager>(&IDriverManager::FindDrivers);
  ExpectSlots<IInstanceManager>(&IInstanceManager::RegisterQuery, &IInstanceManager::UnregisterQuery,
                                &IInstanceManager::Query);
  ExpectSlots<IVariableManager>(&IVariableManager::FindVariable, &IVariableManager::ListVariables);
  ExpectSlots<IVariable>(&IVariable::GetIds, &IVariable::GetName, &IVariable::TrapEnabled);
}

TEST(TheSlots, OfCommandsAndEventsStandAsWritten) {
  ExpectSlots<UICmdDispatcher>(&UICmdDispatcher::RegisterUICmd);
  ExpectSlots<ISystemEventCallback>(&ISystemEventCallback::OnSystemEvent);
}

TEST(TheSlots, OfISupportSNMPStandAsWritten) {
  using S = ISupportSNMP;
  ExpectSlots<S>(
      &S::GetIsManagedDevice, &S::SetIsManagedDevice, &S::GetIsConfigDirty, &S::SetIsConfigDirty, &S::GetEnabledSetting,
      &S::SetEnabledSetting, &S::GetCommunityReadSetting, &S::SetCommunityReadSetting, &S::GetWasCommunityReadSettingErased,
      &S::GetCommunityWriteSetting, &S::SetCommunityWriteSetting, &S::GetWasCommunityWriteSettingErased,
      &S::GetSysContactSetting, &S::SetSysContactSetting, &S::GetWasSysContactSettingErased, &S::GetUsePrimaryContactSetting,
      &S::SetUsePrimaryContactSetting, &S::GetSysLocationSetting, &S::SetSysLocationSetting,
      &S::GetWasSysLocationSettingErased, &S::GetUseProjectOwnerAddressSetting, &S::SetUseProjectOwnerAddressSetting,
      &S::GetSysNameSetting, &S::SetSysNameSetting, &S::GetWasSysNameSettingErased, &S::GetUseRoomDeviceSetting,
      &S::SetUseRoomDeviceSetting, &S::GetTrapTargetsSetting, &S::SetTrapTargetsSetting, &S::ClearTrapTargetSetting,
      &S::AddTrapTargetSetting, &S::GetWasTrapTargetsSettingErased, &S::AgentAvailable, &S::CopyFrom, &S::CopyTo,
      &S::RebootController, &S::StopMasterAgent, &S::StartMasterAgent, &S::GetSNMPVersion, &S::IsSNMPVersionValid);
  EXPECT_EQ(SlotCount<S>(), 40U);
}

// A virtual destructor has two slots: one destroys, the other one also frees the memory.
template <class Driver>
void ExpectDriverSlots() {
  EXPECT_TRUE(std::has_virtual_destructor<Driver>::value);
  EXPECT_EQ(SlotOf(&Driver::Initialize), 2U);
  EXPECT_EQ(SlotOf(&Driver::GetPersistState), 3U);
  EXPECT_EQ(SlotOf(&Driver::RegisterCommands), 4U);
}

// Has access to protected operations.
class AddedToBase : public H7BaseDriver {
 public:
  virtual void Added() = 0;
};

class AddedToAgent : public H7BaseAgentDriver {
 public:
  virtual void Added() = 0;
};

class AddedToDriver : public IDriver {
 public:
  virtual void Added() = 0;
};

TEST(TheSlots, OfTheDriverBasesStandAsWritten) {
  ExpectDriverSlots<IDriver>();
  ExpectDriverSlots<H7BaseDriver>();
  ExpectDriverSlots<H7BaseAgentDriver>();
  EXPECT_EQ(SlotOf(&AddedToDriver::Added), 5U);
  EXPECT_EQ(SlotOf(&AddedToBase::Added), 5U);
  EXPECT_EQ(SlotOf(&AddedToAgent::Added), 5U);
}

// The name of a free function's symbol does not contain its result type, so the linker would not notice a change.
TEST(TheFunctions, OfTheHostHaveTheTypesThatModulesRelyOn) {
  using Node = h7::auto_com<H7XML::INode>;
  EXPECT_TRUE((std::is_same<decltype(H7XML::CreateXmlDocument), h7::auto_com<H7XML::IDocument>(const std::string&)>::value));
  EXPECT_TRUE((std::is_same<decltype(H7XML::Create), void(H7XML::INode**)>::value));
  EXPECT_TRUE((std::is_same<decltype(H7XML::CreateXmlNode(std::string(), std::string())), Node>::value));
  EXPECT_TRUE((std::is_same<decltype(H7XML::CreateXmlNode(std::string(), 1UL)), Node>::value));
  EXPECT_TRUE((std::is_same<decltype(h7::ToString(true)), std::string>::value));
  EXPECT_TRUE((std::is_same<decltype(h7::ToString(1UL)), std::string>::value));
  EXPECT_TRUE((std::is_same<GetCreationFuncFunc, IDriver* (*(*)())(IInstanceManager&)>::value));
}

std::string TextOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Returns the classes with virtual operations that the headers define.
std::set<std::string> DefinedInterfaces() {
  const std::regex definition("class H7_HOST_API (\\w+)[^;{]*\\{");
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(HOST_FOLDER)) {
    const std::string text = entry.path().extension() == ".h" ? TextOf(entry.path()) : "";
    for (std::sregex_iterator match(text.begin(), text.end(), definition), end; match != end; ++match) {
      names.insert((*match)[1]);
    }
  }
  return names;
}

TEST(TheInterfaces, AreAllTestedHere) {
  EXPECT_THAT(DefinedInterfaces(),
              testing::UnorderedElementsAre("H7BaseAgentDriver", "H7BaseDriver", "ICmdMessage", "IDocument", "IDriver",
                                            "IDriverManager", "IInstanceManager", "INode", "INodeList", "ISupportSNMP",
                                            "ISystemEventCallback", "IVariable", "IVariableManager", "UICmdDispatcher"));
}

TEST(TheHeaders, IncludeNothingButHostAndLibraries) {
  const std::regex include("#include \"([^\"]+)\"");
  for (const auto& entry : std::filesystem::directory_iterator(HOST_FOLDER)) {
    const std::string text = entry.path().extension() == ".h" ? TextOf(entry.path()) : "";
    for (std::sregex_iterator match(text.begin(), text.end(), include), end; match != end; ++match) {
      EXPECT_EQ((*match)[1].str().substr(0, 5), "host/") << entry.path();
    }
  }
}

}  // namespace

// With the built agent and a device that journals every call.
#include "devhost/preview/DeviceLife.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "devhost/engine/HostError.h"
#include "devhost/state/StateStore.h"
#include "devhost/xml/XmlReader.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Read = DeviceLife::AgentRead;

constexpr char kText[] = "# by hand\n";
constexpr char kSettings[] =
    "<managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice><snmpSysNameSetting>kitchen</snmpSysNameSetting>"
    "<deviceId>12</deviceId></managedDevice>";

class ALifeOfADevice : public testing::Test {
 protected:
  ALifeOfADevice() { folder.Write("file", kText); }

  DriverEntry Device(const std::string& more = "announce='AgentAvailable'") const {
    return {12, "kitchen", TEST_MODULE_FOLDER "/odd_device.so",
            "<config file='" + folder.Path("file") + "' journal='" + folder.Path("journal") + "' " + more + "/>"};
  }
  std::vector<std::string> Calls() const {
    std::istringstream text(folder.Read("journal"));
    std::vector<std::string> calls;
    for (std::string line; std::getline(text, line);) {
      calls.push_back(line.substr(line.find('.') + 1));
    }
    return calls;
  }
  long Count(const std::string& start) const {
    const std::vector<std::string> calls = Calls();
    return std::count_if(calls.begin(), calls.end(), [&](const std::string& call) { return call.rfind(start, 0) == 0; });
  }

  const testsupport::ScratchFolder folder;
  const DriverEntry agent = {1, "agent", MODULE_FOLDER "/snmp_configuration_agent.so", "<config/>"};
  StateMemory states;
};

TEST_F(ALifeOfADevice, OnlyAsksItBeforeTheAgentIsIn) {
  DeviceLife life(agent, Device());
  EXPECT_EQ(life.Ask("").file, kText);
  EXPECT_EQ(life.Ask("").file, kText);
  EXPECT_EQ(life.AskSettings("", {-9, "known"}).file, "known");
  life.End();
  EXPECT_EQ(Count("Initialize"), 1);
  EXPECT_EQ(Count("CopyFrom"), 2);
  EXPECT_THAT(Calls(),
              Not(Contains(testing::AnyOf(StartsWith("Set"), StartsWith("CopyTo"), StartsWith("GetPersistState")))));
}

TEST_F(ALifeOfADevice, ServesQuestionsAChangeAndALook) {
  DeviceLife life(agent, Device());
  life.Ask("");
  ASSERT_EQ(life.LetAgentIn(kText, nullptr), Read::Expected);
  EXPECT_EQ(Count("CopyTo"), 0);
  EXPECT_EQ(life.SetDeviceState(kSettings, &states), "<Success/>");
  const auto file = life.LookAtFile();
  ASSERT_TRUE(file);
  EXPECT_EQ(file->copyStatus, 0);
  EXPECT_THAT(file->text, AllOf(HasSubstr("\nsysName  kitchen\n"), HasSubstr(kText)));
  life.End();
  EXPECT_EQ(Count("Initialize"), 1);
  EXPECT_EQ(states.Load(12)->GetValue(), "kitchen");
  EXPECT_FALSE(states.Load(1));
  EXPECT_FALSE(life.HasFailed());
}

// The agent, when it goes, takes back that devices are managed.
TEST_F(ALifeOfADevice, EndsBeforeThatOfTheAgent) {
  for (const bool inOrder : {true, false}) {
    folder.Write("file", kText);
    DeviceLife life(agent, Device());
    life.Ask("");
    life.LetAgentIn(kText, nullptr);
    life.SetDeviceState(kSettings, &states);
    if (inOrder) {
      life.End();
    }
  }
  EXPECT_THAT(Calls(), Contains("SetIsManagedDevice true"));
  EXPECT_THAT(Calls(), Not(Contains("SetIsManagedDevice false")));
}

TEST_F(ALifeOfADevice, TellsWhetherTheAgentHasReadTheExpectedFile) {
  DeviceLife life(agent, Device());
  life.Ask("");
  folder.Write("file", "# changed meanwhile\n");
  EXPECT_EQ(life.LetAgentIn(kText, nullptr), Read::Other);
  EXPECT_EQ(life.Ask("").file, "# changed meanwhile\n");
  EXPECT_EQ(Count("Initialize"), 2) << "the agent was in";
  DeviceLife offLine(agent, Device("announce='AgentAvailable' copyFrom='-9'"));
  life.End();
  offLine.Ask("");
  EXPECT_EQ(offLine.LetAgentIn("# changed meanwhile\n", nullptr), Read::Nothing);
}

// Also for a device that is off line: -9 alone would not keep the agent from writing.
TEST_F(ALifeOfADevice, KeepsAnEditThatComesBeforeTheAgentWrites) {
  for (const char* const status : {"0", "-9"}) {
    folder.Write("file", kText);
    folder.Write("journal", "");
    DeviceLife life(agent, Device(std::string("announce='AgentAvailable' editedBefore='3' copyFrom='") + status + "'"));
    life.Ask("");
    EXPECT_NE(life.LetAgentIn(kText, nullptr), Read::Other);
    EXPECT_THROW(life.SetDeviceState(kSettings, &states), HostError);
    EXPECT_EQ(folder.Read("file"), std::string(kText) + "# meanwhile\n");
    EXPECT_EQ(Count("CopyTo"), 0);
    EXPECT_EQ(Count("CopyFrom"), 3);
    EXPECT_FALSE(states.Load(12)) << "the driver holds settings that are not in the file";
  }
}

TEST_F(ALifeOfADevice, SaysWhenTheDeviceCannotBeReadForTheAgent) {
  DeviceLife life(agent, Device("announce='AgentAvailable' copyFrom='-77'"));
  life.Ask("");
  EXPECT_EQ(life.LetAgentIn(kText, nullptr), Read::Nothing);
  EXPECT_EQ(life.SetDeviceState(kSettings, nullptr), "<ReadFail/>");
}

TEST_F(ALifeOfADevice, GivesTheAgentTheEditedFile) {
  DeviceLife life(agent, Device());
  life.Ask("");
  ASSERT_EQ(life.LetAgentIn(kText, [](std::string& text) { text = "# edited\n"; }), Read::Expected);
  life.SetDeviceState(kSettings, nullptr);
  EXPECT_THAT(folder.Read("file"), AllOf(HasSubstr("# edited\n"), Not(HasSubstr(kText))));
}

TEST_F(ALifeOfADevice, BeginsAgainForADeviceThatAnnouncesItselfOnce) {
  DeviceLife life(agent, Device("announce='Initialize'"));
  life.Ask("");
  EXPECT_EQ(life.LetAgentIn(kText, nullptr), Read::Expected);
  EXPECT_EQ(life.SetDeviceState(kSettings, &states), "<Success/>");
  EXPECT_FALSE(life.LookAtFile());
  life.End();
  EXPECT_EQ(Count("Initialize"), 2);
  EXPECT_EQ(states.Load(12)->GetValue(), "kitchen");
}

TEST_F(ALifeOfADevice, IsOverWhenSomebodyElseHasChangedItsState) {
  DeviceLife life(agent, Device());
  EXPECT_EQ(life.Ask("<Odd>one</Odd>").sysName.value, "one");
  EXPECT_TRUE(life.HasBegunWith("<Odd>one</Odd>"));
  EXPECT_FALSE(life.HasBegunWith("<Odd>two</Odd>"));
  EXPECT_EQ(life.Ask("<Odd>two</Odd>").sysName.value, "two");
}

TEST_F(ALifeOfADevice, TellsWhetherItLearnsItsSettingsFromTheFile) {
  for (const bool learns : {true, false}) {
    DeviceLife life(agent, Device(std::string("announce='AgentAvailable'") + (learns ? " learns='yes'" : "")));
    life.AskUnread("");
    life.Ask("");
    EXPECT_EQ(life.LearnsFromFile(), learns);
    life.End();
  }
}

TEST_F(ALifeOfADevice, KeepsWhatItHasHeardOnce) {
  DeviceLife life(agent, Device("announce='AgentAvailable' copyFrom='-9'"));
  life.Ask("");
  life.Ask("");
  life.LetAgentIn(kText, nullptr);
  std::vector<std::string> lines;
  for (const DeviceLife::Heard& heard : life.GetHeard()) {
    lines.push_back(heard.line);
  }
  EXPECT_THAT(lines,
              testing::ElementsAre("kitchen: asked for the file, with held by the driver",
                                   "kitchen: CopyFrom returned -9, during command \"GetDeviceList\" of driver 1 \"agent\""));
}

}  // namespace
}  // namespace devhost

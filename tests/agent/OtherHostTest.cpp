#include <cstdarg>

#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/LogXMessage.h"
#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

// This is a program of its own. Its host's base gives answers that the development host's never gives, and its log shows the
// format.
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct BaseCall {
  unsigned long driverId;
  const H7XML::INode* config;
  const H7XML::INode* persisted;
};

std::vector<BaseCall> s_initialised;
int s_commandsOfTheBase = 0;
std::vector<std::string> s_lines;

}  // namespace

// The program's definitions take precedence over those in the host's library.
int H7BaseAgentDriver::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  s_initialised.push_back({driverId, &config, persisted});
  return 7;
}

void H7BaseAgentDriver::RegisterCommands() {
  ++s_commandsOfTheBase;
}

void LogXMessage(unsigned int level, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  s_lines.push_back(std::to_string(level) + "|" + format + "|" + std::to_string(va_arg(arguments, unsigned int)));
  va_end(arguments);
}

namespace {

class InAnotherHost : public AgentTest {
 protected:
  void SetUp() override {
    s_initialised.clear();
    s_commandsOfTheBase = 0;
    s_lines.clear();
  }

  testsupport::RecordingDevice five{5, journal};
};

TEST_F(InAnotherHost, InitializeGoesOnWhateverTheBaseAnswers) {
  host.drivers = {&five};
  const h7::auto_com<H7XML::INode> state =
      devhost::ReadXmlNode("<s><variables><v deviceid=\"1\" variableid=\"2\" snmpTrapEnabled=\"true\"/></variables></s>");
  EXPECT_EQ(agent.Initialize(state.Get()), 0);
  EXPECT_THAT(journal.Calls(),
              ElementsAre("GetInstanceManager", "RegisterQuery 8C31E6F2-04AB-4f97-A6D5-3B92C7E10F58", "GetDriverManager",
                          "FindDrivers 0 E49A0C76-1D3F-4B82-9E17-60A5D4B8C23D", "5.AgentAvailable"));
  EXPECT_EQ(State().savedTrapFlags.count(VariableKey(1, 2)), 1U);
}

TEST_F(InAnotherHost, InitializeHandsTheBaseWhatTheHostGave) {
  const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", "");
  const h7::auto_com<H7XML::INode> state = H7XML::CreateXmlNode("state", "");
  agent.Driver().Initialize(4294967295UL, *config, state.Get());
  agent.Driver().Initialize(0, *config, nullptr);
  ASSERT_EQ(s_initialised.size(), 2U);
  EXPECT_EQ(s_initialised[0].driverId, 4294967295UL);
  EXPECT_EQ(s_initialised[0].config, config.Get());
  EXPECT_EQ(s_initialised[0].persisted, state.Get());
  EXPECT_EQ(s_initialised[1].driverId, 0U);
  EXPECT_EQ(s_initialised[1].persisted, nullptr);
}

TEST_F(InAnotherHost, TheCommandsOfTheBaseAreNotRegistered) {
  agent.Driver().RegisterCommands();
  EXPECT_EQ(s_commandsOfTheBase, 0);
  EXPECT_EQ(CallsOf({"RegisterUICmd"}).size(), 7U);
}

TEST_F(InAnotherHost, TheLogLineKeepsItsFormat) {
  agent->AddSNMPDevice(7, nullptr);
  agent->AddSNMPDevice(4294967295UL, nullptr);
  EXPECT_THAT(s_lines, ElementsAre("3|Unable to add SNMP device %ul.|7", "3|Unable to add SNMP device %ul.|4294967295"));
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

}  // namespace

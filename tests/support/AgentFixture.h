#ifndef TESTS_SUPPORT_AGENT_FIXTURE_H
#define TESTS_SUPPORT_AGENT_FIXTURE_H

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "tests/support/AgentAccess.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingHost.h"

// For tests of an agent in a recording host. After a test, nothing of the agent may be left in the host. Devices and
// variables that a test gives to the agent must be members of a fixture, because they must outlive the test's body.
class AgentTest : public testing::Test {
 public:
  using Calls = std::vector<std::string>;

 protected:
  AgentTest() { journal.Take(); }

  // The agent is destroyed before the devices in a test's own fixture.
  void TearDown() override {
    journal.SetHook(nullptr);
    agent.Destroy();
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
    EXPECT_TRUE(host.Listeners().empty());
    EXPECT_FALSE(host.AnythingPublished());
  }

  SNMPConfigurationAgentTestAccess State() { return SNMPConfigurationAgentTestAccess(agent.Agent()); }

  static std::string Text(const H7XML::INode& node) { return devhost::XmlText(node, devhost::XmlStyle::Compact); }

  // Returns the calls so far that begin with one of `starts`.
  Calls CallsOf(const Calls& starts) const {
    Calls calls;
    for (const std::string& call : journal.Calls()) {
      for (const std::string& start : starts) {
        if (call.compare(0, start.size(), start) == 0) {
          calls.push_back(call);
          break;
        }
      }
    }
    return calls;
  }

  Journal journal;
  RecordingHost host{journal};
  HostedAgent agent{host};  // constructed, not initialised; the journal no longer has these calls
};

#endif

#include "drivers/common/AgentLink.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/drivers/support/FakeAgent.h"

namespace {

using Calls = std::vector<std::string>;

class ALinkToTheAgent : public testing::Test {
 protected:
  // The link passes the device on and never calls it.
  ISupportSNMP& Device() { return *reinterpret_cast<ISupportSNMP*>(&m_place); }

  FakeInstanceManager m_manager;
  FakeAgent m_agent;
  drivers::AgentLink m_link{m_manager};

 private:
  long m_place = 0;
};

TEST_F(ALinkToTheAgent, SaysThatThereIsNone) {
  EXPECT_FALSE(m_link.Announce(12, Device()));
  EXPECT_FALSE(m_link.IsAnnounced());
  m_link.Withdraw(12);
  EXPECT_TRUE(m_agent.calls.empty());
}

TEST_F(ALinkToTheAgent, AnnouncesAndWithdraws) {
  m_manager.Publish(m_agent);
  EXPECT_TRUE(m_link.Announce(12, Device()));
  EXPECT_TRUE(m_link.IsAnnounced());
  EXPECT_EQ(&Device(), m_agent.devices[12]);
  m_link.Withdraw(12);
  EXPECT_FALSE(m_link.IsAnnounced());
  EXPECT_EQ((Calls{"Add 12", "Delete 12"}), m_agent.calls);
}

TEST_F(ALinkToTheAgent, NotifiesAnAgentEvenOfWhatItKnows) {
  m_manager.Publish(m_agent);
  m_link.Withdraw(12);
  m_link.Announce(12, Device());
  m_link.Announce(12, Device());
  EXPECT_EQ((Calls{"Delete 12", "Add 12", "Add 12"}), m_agent.calls);
}

TEST_F(ALinkToTheAgent, NeverSpeaksToAnAgentThatIsGone) {
  m_manager.Publish(m_agent);
  m_link.Announce(12, Device());
  m_manager.WithdrawAgent();
  EXPECT_FALSE(m_link.IsAnnounced());
  m_link.Withdraw(12);
  EXPECT_EQ((Calls{"Add 12"}), m_agent.calls);
}

TEST_F(ALinkToTheAgent, IsNotAnnouncedToAnAgentThatCameInstead) {
  m_manager.Publish(m_agent);
  m_link.Announce(12, Device());
  FakeAgent other;
  m_manager.Publish(other);
  EXPECT_FALSE(m_link.IsAnnounced());
  m_link.Announce(12, Device());
  EXPECT_TRUE(m_link.IsAnnounced());
  EXPECT_EQ((Calls{"Add 12"}), other.calls);
  EXPECT_EQ((Calls{"Add 12"}), m_agent.calls);
}

TEST_F(ALinkToTheAgent, StaysWithdrawnWhenTheDeviceWithdrawsWhileItIsAnnounced) {
  m_manager.Publish(m_agent);
  bool nested = false;
  m_agent.onCall = [&] {
    if (!nested) {
      nested = true;
      m_link.Withdraw(12);
    }
  };
  EXPECT_TRUE(m_link.Announce(12, Device()));
  EXPECT_FALSE(m_link.IsAnnounced());
  EXPECT_TRUE(m_agent.devices.empty());
}

TEST_F(ALinkToTheAgent, CountsAsAnnouncedWhenTheAgentThrowsWithTheDeviceTakenIn) {
  m_manager.Publish(m_agent);
  m_agent.onCall = [] { throw std::runtime_error("no tool"); };
  EXPECT_THROW(m_link.Announce(12, Device()), std::runtime_error);
  EXPECT_EQ(1U, m_agent.devices.size());
  EXPECT_TRUE(m_link.IsAnnounced());
  EXPECT_THROW(m_link.Withdraw(12), std::runtime_error);
  EXPECT_FALSE(m_link.IsAnnounced());
}

}  // namespace

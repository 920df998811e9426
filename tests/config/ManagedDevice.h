#ifndef TESTS_CONFIG_MANAGED_DEVICE_H
#define TESTS_CONFIG_MANAGED_DEVICE_H

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "agent/SNMPConfigurationAgent.h"
#include "devhost/xml/XmlObserver.h"
#include "device/SNMPDevice.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingDevice.h"
#include "tests/support/RecordingHost.h"

// An agent that knows one device, number 7, and the agent's record of it.
class ManagedDeviceTest : public testing::Test {
 protected:
  ManagedDeviceTest() : host(journal), hosted(host), agent(hosted.Agent()), device(7, journal) {
    agent.AddSNMPDevice(7, &device);
    record.reset(new SNMPDevice(7, &device));
    journal.Take();
  }
  ~ManagedDeviceTest() override {
    journal.SetHook(nullptr);
    hosted.Destroy();
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  }

  // Reads `lines` inside a managed section, which becomes the record's text.
  void ReadSection(const std::string& lines) {
    record->SetConfig("# Halvoren Section Start\n" + lines + "\n# Halvoren Section End\n");
    agent.MergeFromConfig(record);
  }

  // Returns the calls of setters since the journal was last taken.
  std::vector<std::string> Setters() {
    std::vector<std::string> setters;
    for (const std::string& call : journal.Take()) {
      if (call.compare(0, 5, "7.Set") == 0 || call.compare(0, 7, "7.Clear") == 0 || call.compare(0, 5, "7.Add") == 0) {
        setters.push_back(call);
      }
    }
    return setters;
  }

  Journal journal;
  RecordingHost host;
  HostedAgent hosted;
  SNMPConfigurationAgent& agent;
  testsupport::RecordingDevice device;
  boost::shared_ptr<SNMPDevice> record;
};

#endif

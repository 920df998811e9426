// Devices that call back into the agent from inside every call that an operation of the agent makes into a device.
#include <algorithm>
#include <boost/weak_ptr.hpp>
#include <memory>
#include <set>
#include <tuple>

#include "agent/ISNMPConfigurationAgent.h"
#include "device/SNMPDevice.h"
#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

namespace {

using testsupport::RecordingDevice;
using Calls = std::vector<std::string>;
using Ids = std::vector<unsigned long>;

const char kFile[] =
    "# Halvoren Section Start\nrocommunity  r\nrwcommunity  w\nsysContact  c\nsysLocation  l\nsysName  n\n"
    "trap2sink  t\n# Halvoren Section End\n\nother text\n";

// An agent with the devices 3, 5 and 7; the devices 1, 4 and 9 wait to be announced.
struct World {
  World() {
    for (const unsigned long id : {1UL, 3UL, 4UL, 5UL, 7UL, 9UL}) {
      devices[id].reset(new RecordingDevice(id, journal));
      devices[id]->file = kFile;
      devices[id]->managed = true;
    }
    agent.Driver().RegisterCommands();
    agent.Initialize();
    for (const unsigned long id : {3UL, 5UL, 7UL}) {
      agent->AddSNMPDevice(id, devices[id].get());
      host.drivers.push_back(devices[id].get());
    }
    journal.Take();
  }
  ~World() { journal.SetHook(nullptr); }

  ISNMPConfigurationAgent& Agent() { return agent.Published(); }
  void Announce(unsigned long id) { Agent().AddSNMPDevice(id, devices[id].get()); }
  void Withdraw(unsigned long id) { Agent().DeleteSNMPDevice(id); }

  Journal journal;
  std::map<unsigned long, std::unique_ptr<RecordingDevice>> devices;
  RecordingHost host{journal};
  HostedAgent agent{host};
};

struct Operation {
  const char* name;
  std::string (*run)(World&);  // returns the operation's result
  const char* mark;            // for walks: the first call to each visited device; otherwise null
  bool walksTheMap;            // the walk notices devices that come and go
};

std::string OnFive(World& world, const char* command) {
  return world.host.CommandText(command, {{"deviceId", "5"}, {"xml", "<d><deviceId>5</deviceId></d>"}});
}

const Operation kOperations[] = {
    {"GetDeviceList", [](World& world) { return world.host.CommandText("GetDeviceList"); }, "GetSNMPVersion", true},
    {"SetDeviceStateCommand", [](World& world) { return OnFive(world, "SetDeviceState"); }, nullptr, false},
    {"SetDeviceState", [](World& world) { return std::string(world.Agent().SetDeviceState(5) ? "true" : "false"); }, nullptr,
     false},
    {"AddManagedDevice", [](World& world) { return OnFive(world, "AddManagedDevice"); }, nullptr, false},
    {"DeleteManagedDevice", [](World& world) { return OnFive(world, "DeleteManagedDevice"); }, nullptr, false},
    {"RebootController", [](World& world) { return OnFive(world, "RebootController"); }, nullptr, false},
    {"StopMasterAgent", [](World& world) { return OnFive(world, "StopMasterAgent"); }, nullptr, false},
    {"StartMasterAgent", [](World& world) { return OnFive(world, "StartMasterAgent"); }, nullptr, false},
    {"Destruction",
     [](World& world) {
       world.agent.Destroy();
       return std::string();
     },
     "GetIsManagedDevice", true},
    {"Initialize", [](World& world) { return std::to_string(world.agent.Initialize()); }, "AgentAvailable", false},
};

struct Action {
  const char* name;
  void (*run)(World&, unsigned long self);
  bool setsState;
};

const Action kActions[] = {
    {"WithdrawSelf", [](World& world, unsigned long self) { world.Withdraw(self); }, false},
    {"WithdrawSelfAndComeBack",
     [](World& world, unsigned long self) {
       world.Withdraw(self);
       world.Announce(self);
     },
     false},
    {"WithdrawLower", [](World& world, unsigned long self) { world.Withdraw(self == 3 ? 1 : self - 2); }, false},
    {"WithdrawHigher", [](World& world, unsigned long self) { world.Withdraw(self + 2); }, false},
    {"WithdrawAll",
     [](World& world, unsigned long) {
       for (const unsigned long id : {3UL, 5UL, 7UL}) {
         world.Withdraw(id);
       }
     },
     false},
    {"AnnounceLower", [](World& world, unsigned long) { world.Announce(1); }, false},
    {"AnnounceBetween", [](World& world, unsigned long) { world.Announce(4); }, false},
    {"AnnounceHigher", [](World& world, unsigned long) { world.Announce(9); }, false},
    {"SetStateOfSelf", [](World& world, unsigned long self) { world.Agent().SetDeviceState(self); }, true},
    {"SetStateOfNeighbour", [](World& world, unsigned long self) { world.Agent().SetDeviceState(self == 5 ? 7 : 5); }, true},
};

bool IsDeviceCall(const std::string& call) {
  return call[0] >= '0' && call[0] <= '9';
}

unsigned long DeviceOf(const std::string& call) {
  return std::stoul(call);
}

// What an operation did, without what happened inside the action.
struct Outcome {
  std::string result;
  Calls deviceCalls;  // without those of the action
  bool acted = false;
  unsigned long self = 0;       // the device that acted
  std::set<unsigned long> ids;  // the devices that were registered after the action
};

class ADeviceThatCallsBack : public testing::TestWithParam<std::tuple<Operation, Action>> {
 protected:
  // Runs the operation; device call number `index` performs the action.
  Outcome Run(World& world, std::size_t index) {
    const Operation& operation = std::get<0>(GetParam());
    const Action& action = std::get<1>(GetParam());
    DeviceMap& map = SNMPConfigurationAgentTestAccess(world.agent.Agent()).devices;
    Outcome outcome;
    bool inside = false;
    world.journal.SetHook([&](const std::string& call) {
      if (inside || !IsDeviceCall(call)) {
        return;
      }
      outcome.deviceCalls.push_back(call);
      if (outcome.deviceCalls.size() == index + 1) {
        outcome.acted = true;
        outcome.self = DeviceOf(call);
        const boost::weak_ptr<SNMPDevice> record(map.at(outcome.self));
        inside = true;
        action.run(world, outcome.self);
        inside = false;
        // A record in use lives on. Initialize signals devices without a record.
        EXPECT_TRUE(!record.expired() || operation.name == std::string("Initialize"));
        for (const auto& entry : map) {
          outcome.ids.insert(entry.first);
        }
      }
    });
    outcome.result = operation.run(world);
    world.journal.SetHook(nullptr);
    return outcome;
  }

  static Ids Visited(const Calls& calls, const char* mark) {
    Ids visited;
    for (const std::string& call : calls) {
      if (call.substr(call.find('.') + 1) == mark) {
        visited.push_back(DeviceOf(call));
      }
    }
    return visited;
  }

  static Calls CallsTo(unsigned long id, const Calls& calls) {
    Calls own;
    for (const std::string& call : calls) {
      if (DeviceOf(call) == id) {
        own.push_back(call.substr(call.find('.')));
      }
    }
    return own;
  }

  static bool IsPartOf(const Calls& calls, const Calls& whole) {
    auto at = whole.begin();
    for (const std::string& call : calls) {
      at = std::find(at, whole.end(), call);
      if (at == whole.end()) {
        return false;
      }
      ++at;
    }
    return true;
  }
};

// The walk visits the devices up to the acting one as before, then those with higher ids that are registered now.
Ids ExpectedVisits(const Outcome& outcome) {
  Ids ids;
  for (const unsigned long id : {3UL, 5UL, 7UL}) {
    if (id <= outcome.self) {
      ids.push_back(id);
    }
  }
  ids.insert(ids.end(), outcome.ids.upper_bound(outcome.self), outcome.ids.end());
  return ids;
}

TEST_P(ADeviceThatCallsBack, DoesNotDisturbTheOperation) {
  const Operation& operation = std::get<0>(GetParam());
  const Action& action = std::get<1>(GetParam());
  Outcome undisturbed;
  {
    World world;
    undisturbed = Run(world, static_cast<std::size_t>(-2));
    ASSERT_FALSE(undisturbed.deviceCalls.empty());
  }
  for (std::size_t index = 0; index != undisturbed.deviceCalls.size(); ++index) {
    SCOPED_TRACE("inside call " + std::to_string(index) + ", " + undisturbed.deviceCalls[index]);
    {
      World world;
      const bool destroys = operation.name == std::string("Destruction");
      const Outcome outcome = Run(world, index);
      ASSERT_TRUE(outcome.acted);
      Ids visited = {5};
      if (operation.mark != nullptr) {
        visited = Visited(outcome.deviceCalls, operation.mark);
        EXPECT_EQ(visited, operation.walksTheMap ? ExpectedVisits(outcome) : Ids({3, 5, 7}));
      } else {
        EXPECT_EQ(outcome.result, undisturbed.result);
      }
      for (const unsigned long id : visited) {
        const Calls calls = CallsTo(id, outcome.deviceCalls);
        const Calls usual = CallsTo(5, undisturbed.deviceCalls);
        // When the action set a state, it has filled settings. When a device has withdrawn, it is not released at the end.
        if (action.setsState || (destroys && outcome.ids.count(id) == 0)) {
          EXPECT_TRUE(IsPartOf(calls, usual)) << testing::PrintToString(calls);
        } else {
          EXPECT_EQ(calls, usual) << "device " << id;
        }
        if (operation.name == std::string("GetDeviceList")) {
          EXPECT_NE(outcome.result.find("<deviceId>" + std::to_string(id) + "</deviceId>"), std::string::npos);
        }
      }
      if (!destroys) {
        for (const auto& entry : SNMPConfigurationAgentTestAccess(world.agent.Agent()).devices) {
          EXPECT_EQ(entry.second.use_count(), 1) << "device " << entry.first;
        }
      }
    }
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  }
}

INSTANTIATE_TEST_SUITE_P(InsideEveryCall, ADeviceThatCallsBack,
                         testing::Combine(testing::ValuesIn(kOperations), testing::ValuesIn(kActions)),
                         [](const testing::TestParamInfo<std::tuple<Operation, Action>>& parameter) {
                           return std::string(std::get<0>(parameter.param).name) + std::get<1>(parameter.param).name;
                         });

}  // namespace

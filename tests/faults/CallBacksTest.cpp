// Devices call back into the agent from inside an operation. A fault strikes during the call back, or later in the
// operation.
#include <gmock/gmock.h>

#include <string>
#include <tuple>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "tests/faults/Sweep.h"

namespace {

using faults::CallBack;
using faults::FaultKind;
using faults::World;

// An operation, and a call that it makes to a device.
struct Place {
  const char* operation;
  const char* from;
};

const Place kPlaces[] = {{"InitializeWithAState", "7.AgentAvailable"},
                         {"InitializeAgain", "5.AgentAvailable"},
                         {"GetDeviceList", "7.CopyFrom /etc/snmp/snmpd.conf.local"},
                         {"GetDeviceList", "9.GetTrapTargetsSetting"},
                         {"SetDeviceStateCommand", "5.ClearTrapTargetSetting"},
                         {"SetDeviceStateCommand", "5.CopyFrom /etc/snmp/snmpd.conf.local"},
                         {"SetDeviceStateCommand", "5.CopyTo /etc/snmp/snmpd.conf.local"},
                         {"SetDeviceState", "7.CopyFrom /etc/snmp/snmpd.conf.local"},
                         {"SetDeviceState", "7.CopyTo /etc/snmp/snmpd.conf.local"},
                         {"AddManagedDevice", "7.SetIsManagedDevice true"},
                         {"DeleteManagedDevice", "5.SetIsManagedDevice false"},
                         {"RebootController", "5.RebootController"},
                         {"Destroy", "5.GetIsManagedDevice"},
                         {"Destroy", "9.SetIsManagedDevice false"}};

void Announce(World& world, unsigned long self) {
  world.Announce(self);
  world.Announce(4);
}
void Withdraw(World& world, unsigned long self) {
  world.Published().DeleteSNMPDevice(self);
}
void WithdrawAll(World& world, unsigned long) {
  for (const unsigned long id : {5UL, 7UL, 9UL}) {
    world.Published().DeleteSNMPDevice(id);
  }
}
void ComeBack(World& world, unsigned long self) {
  Withdraw(world, self);
  world.Announce(self);
}
void SetStateOfNeighbour(World& world, unsigned long self) {
  world.Published().SetDeviceState(self == 9 ? 5 : 9);
}

struct Deed {
  const char* name;
  void (*run)(World&, unsigned long self);
};

const Deed kDeeds[] = {{"Announces", Announce},
                       {"Withdraws", Withdraw},
                       {"WithdrawsAll", WithdrawAll},
                       {"WithdrawsAndComesBack", ComeBack},
                       {"SetsTheStateOfItsNeighbour", SetStateOfNeighbour}};

class ADeviceThatCallsBack : public testing::TestWithParam<std::tuple<Place, Deed, bool, FaultKind>> {
 public:
  static std::string NameOf(const testing::TestParamInfo<ParamType>& test) {
    const Place& place = std::get<0>(test.param);
    const std::string from = place.from;
    return std::string(place.operation) + "_From" + from[0] + from.substr(2, from.find(' ') - 2) + '_' +
           std::get<1>(test.param).name + (std::get<2>(test.param) ? "_AndKeepsFaultsIn_" : "_") +
           std::get<3>(test.param).name;
  }
};

TEST_P(ADeviceThatCallsBack, LosesNothingWhereverAFaultStrikes) {
  const Place& place = std::get<0>(GetParam());
  const Deed& deed = std::get<1>(GetParam());
  const CallBack callBack = {deed.run, place.from, std::get<2>(GetParam())};
  const faults::SweepResult result = faults::Sweep(faults::OperationOf(place.operation), std::get<3>(GetParam()), &callBack);
  EXPECT_THAT(result.complaints, testing::IsEmpty());
  EXPECT_GT(result.faults, 0U);
}

INSTANTIATE_TEST_SUITE_P(Faults, ADeviceThatCallsBack,
                         testing::Combine(testing::ValuesIn(kPlaces), testing::ValuesIn(kDeeds), testing::Bool(),
                                          testing::Values(faults::kFaultKinds[0], faults::kFaultKinds[2])),
                         ADeviceThatCallsBack::NameOf);

}  // namespace

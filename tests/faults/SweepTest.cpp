// Tests the sweep with operations that lose something.
#include "tests/faults/Sweep.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "host/H7XML.h"

namespace {

using faults::Operation;
using faults::Passes;
using faults::Stage;
using faults::World;
using testing::Contains;
using testing::HasSubstr;

constexpr faults::FaultKind kAnAllocationFails = faults::kFaultKinds[0];
constexpr faults::FaultKind kACallThrows = faults::kFaultKinds[2];

// Holds what the broken operations below lose, until the end of a test.
struct Lost {
  std::vector<h7::auto_com<H7XML::INode>> nodes;
  std::vector<boost::shared_ptr<SNMPDevice>> records;
  std::vector<std::unique_ptr<int>> blocks;
  int count = 0;
};
Lost* s_lost = nullptr;

class ASweep : public testing::Test {
 protected:
  ASweep() { s_lost = &m_lost; }
  ~ASweep() override { s_lost = nullptr; }

  static std::vector<std::string> ComplaintsOf(Passes passes, void (*run)(World&),
                                               const faults::FaultKind& kind = kACallThrows) {
    const Operation operation = {"Broken", Stage::Running, passes, run};
    return faults::Sweep(operation, kind).complaints;
  }

 private:
  Lost m_lost;
};

void Announce(World& world) {
  world.Announce(4);
}

TEST_F(ASweep, CountsTheFaultsAndDoesNotComplainWhenAllIsWell) {
  const Operation operation = {"Announce", Stage::Running, Passes::Through, Announce};
  const faults::SweepResult result = faults::Sweep(operation, kACallThrows);
  EXPECT_THAT(result.complaints, testing::IsEmpty());
  // They are the notification's node, its child, and the sending.
  EXPECT_EQ(result.faults, 3U);
}

TEST_F(ASweep, NamesThePlaceAndTheCall) {
  const auto complaints = ComplaintsOf(Passes::Never, Announce);
  ASSERT_EQ(complaints.size(), 1U);
  EXPECT_THAT(complaints[0], testing::StartsWith("k = 1: the fault did not come out as it was thrown"));
  EXPECT_THAT(complaints[0], HasSubstr("(what failed: CreateXmlNode DeviceAdded)"));
}

TEST_F(ASweep, SeesAFaultThatIsSwallowed) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             try {
                               world.Announce(4);
                             } catch (...) {
                             }
                           }),
              Contains(HasSubstr("did not come out")));
}

TEST_F(ASweep, SeesAFaultThatBecomesAnother) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             try {
                               world.Announce(4);
                             } catch (const std::runtime_error& error) {
                               // This slices the exception.
                               throw std::runtime_error(error);
                             }
                           }),
              Contains(HasSubstr("did not come out as it was thrown")));
}

TEST_F(ASweep, SeesANodeThatIsNotReleasedWhenTheNextCallFails) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             const h7::auto_com<H7XML::INode> node = H7XML::CreateXmlNode("lost", "");
                             try {
                               world.Announce(4);
                             } catch (...) {
                               s_lost->nodes.push_back(node);
                               throw;
                             }
                           }),
              Contains(HasSubstr("XML objects are alive, but nobody holds them")));
}

TEST_F(ASweep, SeesANodeThatIsReleasedTwiceWhenTheNextCallFails) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             const h7::auto_com<H7XML::INode> node = H7XML::CreateXmlNode("released", "");
                             try {
                               world.Announce(4);
                             } catch (...) {
                               node->Release();
                               throw;
                             }
                           }),
              Contains(HasSubstr("released too often")));
}

TEST_F(ASweep, SeesARecordThatIsHeld) {
  const auto complaints = ComplaintsOf(Passes::Through, [](World& world) {
    s_lost->records.push_back(world.State().devices.at(5));
    world.Announce(4);
  });
  EXPECT_THAT(complaints, Contains(HasSubstr("the record of 5 is held by others than the registry")));
  EXPECT_THAT(complaints, Contains(HasSubstr("a record outlived the agent")));
}

TEST_F(ASweep, SeesMemoryThatIsNotGivenBack) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             s_lost->blocks.push_back(std::make_unique<int>(1));
                             world.Announce(4);
                           }),
              Contains(HasSubstr("blocks of memory became")));
}

TEST_F(ASweep, SeesMemoryThatIsLostOnlyWhenTheNextAllocationFails) {
  EXPECT_THAT(ComplaintsOf(
                  Passes::Through,
                  [](World& world) {
                    int* const block = new int(1);
                    try {
                      world.Announce(4);
                    } catch (...) {
                      s_lost->blocks.emplace_back(block);
                      throw;
                    }
                    delete block;
                  },
                  kAnAllocationFails),
              Contains(HasSubstr("blocks of memory became")));
}

TEST_F(ASweep, SeesAnEntryThatNobodyMade) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             IVariable*& variable = world.State().deviceVariables[VariableKey(5, 4)];
                             variable = world.host.Variables()->FindVariable(5, 4);
                           }),
              Contains(HasSubstr("the map of variables has 5/4 with a variable that is not the host's")));
}

TEST_F(ASweep, SeesARegistryEntryWithoutARecord) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             boost::shared_ptr<SNMPDevice>& record = world.State().devices[4];
                             world.journal.Note("a call");
                             record.reset(new SNMPDevice(4, &world.Device(4)));
                           }),
              Contains(HasSubstr("the record of 4 is missing")));
}

TEST_F(ASweep, SeesAResultThatDependsOnWhatFailedBefore) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             world.answer = ++s_lost->count;
                             world.Announce(4);
                           }),
              Contains(HasSubstr("the result differs from that in a world without faults")));
}

TEST_F(ASweep, SeesAnOperationThatDoesNotWorkASecondTime) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             if (world.Device(5).dirty) {
                               throw std::logic_error("no second time");
                             }
                             world.Device(5).dirty = true;
                             world.Announce(4);
                           }),
              Contains(HasSubstr("the repeated operation throws: no second time")));
}

TEST_F(ASweep, SeesThatAnOperationLeftSomethingElse) {
  EXPECT_THAT(ComplaintsOf(Passes::Through,
                           [](World& world) {
                             world.Device(7).sysName += "x";
                             world.Announce(4);
                           }),
              Contains(HasSubstr("the operation left another state than in a world without faults")));
}

TEST_F(ASweep, SeesADeviceThatNeverCallsBack) {
  const faults::CallBack never = {[](World&, unsigned long) {}, "9.RebootController", false};
  EXPECT_THAT(faults::Sweep(faults::OperationOf("AddSNMPDevice"), kACallThrows, &never).complaints,
              Contains(HasSubstr("the device was never reached")));
}

}  // namespace

// Tests of the faults themselves.
#include "tests/faults/Faults.h"

#include <gmock/gmock.h>

#include <memory>
#include <new>

#include "host/H7XML.h"

namespace {

using faults::CallFailed;
using faults::Ending;
using faults::FaultKind;
using faults::Faults;
using faults::Foreign;
using faults::NoMemory;

constexpr FaultKind kOneAllocation = faults::kFaultKinds[0];
constexpr FaultKind kAllAllocations = faults::kFaultKinds[1];
constexpr FaultKind kOneCall = faults::kFaultKinds[2];
constexpr FaultKind kAllCalls = faults::kFaultKinds[3];
constexpr FaultKind kForeign = faults::kFaultKinds[4];

// This does not use a new-expression, because the compiler may optimise it away.
void Allocate() {
  ::operator delete(::operator new(1));
}

class AFault : public testing::Test {
 protected:
  void Expect(const Ending& ending, Ending::How how, unsigned int number) {
    EXPECT_EQ(ending.how, how);
    EXPECT_EQ(ending.number, number);
  }
  Journal journal;
};

TEST_F(AFault, StrikesTheAllocationThatItIsMeantFor) {
  for (unsigned int k = 1; k != 5; ++k) {
    Faults faults(kOneAllocation, k);
    unsigned int made = 0;
    const Ending ending = faults.Run(journal, [&made] {
      for (; made != 3; ++made) {
        Allocate();
      }
    });
    Expect(ending, k <= 3 ? Ending::How::ThrewAFault : Ending::How::Returned, k <= 3 ? 1 : 0);
    EXPECT_EQ(made, k - 1);
    EXPECT_EQ(faults.Thrown(), k <= 3 ? 1U : 0U);
  }
}

TEST_F(AFault, StrikesOnceOrFromThereOn) {
  for (const bool lasting : {false, true}) {
    Faults faults(lasting ? kAllAllocations : kOneAllocation, 2);
    const Ending ending = faults.Run(journal, [] {
      Allocate();
      EXPECT_THROW(Allocate(), NoMemory);
      Allocate();
    });
    Expect(ending, lasting ? Ending::How::ThrewAFault : Ending::How::Returned, lasting ? 2 : 0);
    EXPECT_EQ(faults.Thrown(), lasting ? 2U : 1U);
  }
}

TEST_F(AFault, IsOverWhenTheWorkIsOver) {
  Faults faults(kAllAllocations, 1);
  faults.Run(journal, [] { Allocate(); });
  EXPECT_EQ(faults.Thrown(), 1U);
  Allocate();
  Faults calls(kAllCalls, 1);
  calls.Run(journal, [] { H7XML::CreateXmlNode("x", ""); });
  journal.Note("afterwards");
  H7XML::CreateXmlNode("x", "");
  EXPECT_EQ(calls.Thrown(), 1U);
}

TEST_F(AFault, WaitsUntilItMayBegin) {
  Faults faults(kOneCall, 1);
  faults.WaitForBegin();
  faults.Run(journal, [this, &faults] {
    journal.Note("before");
    faults.Begin();
    journal.Note("after");
  });
  EXPECT_EQ(faults.FailedCall(), "after");
}

TEST_F(AFault, StrikesCallsToHostDevicesAndXmlInTheirOrder) {
  const char* const expected[] = {"a call", "CreateXmlNode x", "SetNamedString name", "another call"};
  for (unsigned int k = 1; k != 5; ++k) {
    Faults faults(kOneCall, k);
    const Ending ending = faults.Run(journal, [this] {
      journal.Note("a call");
      H7XML::CreateXmlNode("x", "")->SetNamedString("name", "");
      journal.Note("another call");
    });
    Expect(ending, Ending::How::ThrewAFault, 1);
    EXPECT_EQ(faults.FailedCall(), expected[k - 1]);
  }
}

TEST_F(AFault, IsToldApartFromOtherExceptions) {
  Faults foreign(kForeign, 1);
  Expect(foreign.Run(journal, [this] { EXPECT_THROW(journal.Note("a call"), Foreign); }), Ending::How::Returned, 0);
  Faults translated(kOneCall, 1);
  const Ending ending = translated.Run(journal, [this] {
    try {
      journal.Note("a call");
    } catch (const CallFailed& fault) {
      throw std::runtime_error(fault.what());
    }
  });
  Expect(ending, Ending::How::ThrewSomethingElse, 0);
}

TEST_F(AFault, RunsTheHookInCallsThatDoNotFail) {
  std::vector<std::string> heard;
  Faults faults(kOneCall, 2);
  faults.Run(
      journal,
      [this] {
        journal.Note("first");
        journal.Note("second");
      },
      [&heard](const std::string& call) { heard.push_back(call); });
  EXPECT_THAT(heard, testing::ElementsAre("first"));
}

TEST(Memory, CountsWhatIsAlive) {
  const std::size_t before = faults::LiveBlocks();
  auto block = std::make_unique<std::string>(100, 'x');
  EXPECT_EQ(faults::LiveBlocks(), before + 2);
  block.reset();
  EXPECT_EQ(faults::LiveBlocks(), before);
}

TEST(MemoryDeathTest, EndsTheProgramWhenABlockIsGivenBackTwice) {
  void* volatile const block = ::operator new(8);
  EXPECT_DEATH(
      {
        ::operator delete(block);
        ::operator delete(block);
      },
      "given back twice|heap-use-after-free");
  ::operator delete(block);
}

TEST(MemoryDeathTest, EndsTheProgramWhenABlockIsGivenBackInAnotherForm) {
  void* volatile const block = ::operator new[](8);
  EXPECT_DEATH(::operator delete(block), "another form");
  ::operator delete[](block);
}

}  // namespace

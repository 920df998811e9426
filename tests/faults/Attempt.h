#ifndef TESTS_FAULTS_ATTEMPT_H
#define TESTS_FAULTS_ATTEMPT_H

#include <boost/weak_ptr.hpp>
#include <functional>
#include <string>
#include <vector>

#include "devhost/xml/XmlMisuse.h"
#include "tests/faults/Faults.h"
#include "tests/faults/Operations.h"

namespace faults {

// A device that calls back into the agent from inside a call that it gets. Faults strike only from that call on, because
// before it everything is the same as without a call back.
struct CallBack {
  void (*run)(World&, unsigned long self);
  std::string from;    // the call, as the journal records it; only the first such call counts
  bool keepsFaultsIn;  // the device catches and drops what the agent throws
};

// The result of an operation, and the state that it leaves, in a world where nothing fails.
struct Reference {
  std::string result;
  std::string description;
};
Reference ReferenceOf(const Operation& operation);

// One run of an operation in a world of its own, with a fault at one place, and the checks of that world afterwards.
class Attempt {
 public:
  // Adds what is wrong to `complaints`. `callBack` may be null.
  Attempt(const Operation& operation, const Reference& reference, const FaultKind& kind, unsigned int k,
          const CallBack* callBack, std::vector<std::string>& complaints);

  // Returns whether anything failed.
  bool Run();

 private:
  void Expect(bool holds, const char* complaint);
  void NoteRecords();
  std::function<void(const std::string&)> CallingBack();
  // Returns whether the fault came out as it must.
  bool EndedWell() const;
  // Returns the number of faults that did not come out of the operation.
  unsigned int KeptIn() const;
  std::size_t LeftInHost() const;
  void CheckWhatDestructionDid();
  void CheckUndisturbed();
  void CheckResult();
  void DoAgain();
  void UseOtherwise();
  void DestroyCleanly();
  bool AnyManaged() const;

  // Counts XML objects that are released too often or used after their end. It is the first member, so it is destroyed last.
  class Misuses final : public devhost::XmlMisuseSink {
   public:
    Misuses() : m_former(devhost::SetXmlMisuseSink(this)) {}
    ~Misuses() override { devhost::SetXmlMisuseSink(m_former); }
    Misuses(const Misuses&) = delete;
    Misuses& operator=(const Misuses&) = delete;
    void OnXmlMisuse(const std::string&, const void*) override { ++count; }

    unsigned int count = 0;

   private:
    devhost::XmlMisuseSink* const m_former;
  };

  const Misuses m_misuses;
  const Operation& m_operation;
  const Reference& m_reference;
  const CallBack* const m_callBack;
  std::vector<std::string>& m_complaints;
  Faults m_faults;
  World m_world;
  Ending m_ending;
  bool m_calledBack = false;
  unsigned int m_keptInByDevice = 0;
  std::vector<boost::weak_ptr<SNMPDevice>> m_records;
};

}  // namespace faults

#endif

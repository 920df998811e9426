#ifndef TESTS_FAULTS_FAULTS_H
#define TESTS_FAULTS_FAULTS_H

#include <functional>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>

#include "devhost/xml/XmlObserver.h"
#include "tests/faults/Memory.h"
#include "tests/support/Journal.h"

namespace faults {

// A kind of fault.
struct FaultKind {
  const char* name;
  bool allocations;  // allocations fail; otherwise calls into the host or into a device throw
  bool lasting;      // all later ones fail, too, as long as the faults are armed
  bool foreign;      // what a call throws is not derived from std::exception
};

constexpr FaultKind kFaultKinds[] = {{"AnAllocationFails", true, false, false},
                                     {"AllocationsFailFromThereOn", true, true, false},
                                     {"ACallThrows", false, false, false},
                                     {"CallsThrowFromThereOn", false, true, false},
                                     {"ACallThrowsAForeignType", false, false, true}};

// For GoogleTest.
inline void PrintTo(const FaultKind& kind, std::ostream* out) {
  *out << kind.name;
}

// What faults throw. The number tells them apart; the first fault has 1.
struct NoMemory : std::bad_alloc {
  explicit NoMemory(unsigned int which) : number(which) {}
  unsigned int number;
};
struct CallFailed : std::runtime_error {
  explicit CallFailed(unsigned int which) : std::runtime_error("the call fails"), number(which) {}
  unsigned int number;
};
struct Foreign {
  unsigned int number;
};

// How a piece of work with faults has ended.
struct Ending {
  enum class How { Returned, ThrewAFault, ThrewSomethingElse };
  How how = How::Returned;
  unsigned int number = 0;  // the number of the fault that came out
};

// Lets something fail while a piece of work runs: the `k`-th allocation or call, counted from 1.
//
// Every allocation counts, whether the plug-in, the XML library or the recording fakes make it. None of them may lose memory
// when a fault strikes, and all pass the fault on, except what must not throw: the base's destruction and the log line drop
// it. A call is what the journal records, and each call into the XML library except AddRef and Release.
class Faults : private devhost::XmlObserver, private AllocationObserver {
 public:
  Faults(const FaultKind& kind, unsigned int k) : m_kind(kind), m_k(k) {}
  virtual ~Faults() = default;
  Faults(const Faults&) = delete;
  Faults& operator=(const Faults&) = delete;

  // Runs `work` once with the faults armed. `onCall` runs from inside each call that the journal records and that does not
  // fail.
  Ending Run(Journal& journal, const std::function<void()>& work,
             const std::function<void(const std::string&)>& onCall = nullptr);

  // After `WaitForBegin`, nothing counts until `Begin`, which is called while the work runs.
  void WaitForBegin() { m_waits = true; }
  void Begin() { m_waits = false; }

  // Returns how many faults were thrown.
  unsigned int Thrown() const { return m_thrown; }
  // Returns the call that failed first, or an empty text.
  const std::string& FailedCall() const { return m_failedCall; }

 private:
  void OnAllocation() override;
  void OnXmlCall(const char* operation, const char* name) override;
  void OnCall(const std::string& call);
  bool StrikesNow();
  [[noreturn]] void ThrowFromCall(const std::string& call);

  const FaultKind m_kind;
  const unsigned int m_k;
  bool m_waits = false;
  unsigned int m_passed = 0;
  unsigned int m_thrown = 0;
  std::string m_failedCall;
};

}  // namespace faults

#endif

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

// What goes wrong.
struct FaultKind {
  const char* name;
  bool allocations;  // allocations fail; otherwise calls into the host or into a device throw
  bool lasting;      // all that follow fail too, as long as the faults are armed
  bool foreign;      // what a call throws is derived from no standard exception
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

// What faults throw. The number, 1 for the first that was thrown, tells them apart.
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

// How a piece of work that faults were let loose on ended.
struct Ending {
  enum class How { Returned, ThrewAFault, ThrewSomethingElse };
  How how = How::Returned;
  unsigned int number = 0;  // of the fault that came out
};

// Lets something fail while a piece of work runs: the `k`-th allocation or call, counted from 1.
//
// Every allocation counts, whoever makes it: the plug-in, the XML library, the recording fakes. None of them may lose one,
// and all of them pass it on, but for what must not throw: the base's end and the log line drop what they cannot do. A call
// is what the journal hears of, and each call into the XML library but AddRef and Release.
class Faults : private devhost::XmlObserver, private AllocationObserver {
 public:
  Faults(const FaultKind& kind, unsigned int k) : m_kind(kind), m_k(k) {}
  virtual ~Faults() = default;
  Faults(const Faults&) = delete;
  Faults& operator=(const Faults&) = delete;

  // Runs `work` with the faults armed, once. `onCall` runs from inside each call that the journal hears of and that does
  // not fail.
  Ending Run(Journal& journal, const std::function<void()>& work,
             const std::function<void(const std::string&)>& onCall = nullptr);

  // Nothing counts until `Begin`, which is called while the work runs.
  void WaitForBegin() { m_waits = true; }
  void Begin() { m_waits = false; }

  // How many faults were thrown.
  unsigned int Thrown() const { return m_thrown; }
  // The call that failed first; empty when none did.
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

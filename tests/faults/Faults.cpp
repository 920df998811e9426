#include "tests/faults/Faults.h"

namespace faults {
namespace {

Ending EndingOf(const std::function<void()>& work) {
  try {
    work();
    return {};
  } catch (const NoMemory& fault) {
    return {Ending::How::ThrewAFault, fault.number};
  } catch (const CallFailed& fault) {
    return {Ending::How::ThrewAFault, fault.number};
  } catch (const Foreign& fault) {
    return {Ending::How::ThrewAFault, fault.number};
  } catch (...) {
    return {Ending::How::ThrewSomethingElse, 0};
  }
}

}  // namespace

Ending Faults::Run(Journal& journal, const std::function<void()>& work,
                   const std::function<void(const std::string&)>& onCall) {
  if (!m_kind.allocations || onCall) {
    journal.SetHook([this, &onCall](const std::string& call) {
      if (!m_kind.allocations) {
        OnCall(call);
      }
      if (onCall) {
        onCall(call);
      }
    });
  }
  // The faults are disarmed in here, so that none strikes while the exception is handled.
  const std::function<void()> armed = [this, &work] {
    struct Armed {
      ~Armed() {
        SetAllocationObserver(nullptr);
        devhost::SetXmlObserver(nullptr);
      }
    } const whileItRuns;
    devhost::SetXmlObserver(m_kind.allocations ? nullptr : this);
    SetAllocationObserver(m_kind.allocations ? this : nullptr);
    work();
  };
  const Ending ending = EndingOf(armed);
  journal.SetHook(nullptr);
  return ending;
}

bool Faults::StrikesNow() {
  if (m_waits) {
    return false;
  }
  ++m_passed;
  const bool strikes = m_kind.lasting ? m_k != 0 && m_passed >= m_k : m_passed == m_k;
  m_thrown += strikes ? 1 : 0;
  return strikes;
}

void Faults::OnAllocation() {
  if (StrikesNow()) {
    throw NoMemory(m_thrown);
  }
}

void Faults::OnXmlCall(const char* operation, const char* name) {
  if (StrikesNow()) {
    ThrowFromCall(std::string(operation) + ' ' + name);
  }
}

void Faults::OnCall(const std::string& call) {
  if (StrikesNow()) {
    ThrowFromCall(call);
  }
}

void Faults::ThrowFromCall(const std::string& call) {
  if (m_thrown == 1) {
    m_failedCall = call;
  }
  if (m_kind.foreign) {
    throw Foreign{m_thrown};
  }
  throw CallFailed(m_thrown);
}

}  // namespace faults

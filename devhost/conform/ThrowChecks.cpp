// Group "throw": services of the host that throw, and what comes out of a device.
#include <filesystem>
#include <stdexcept>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "host/IInstanceManager.h"

namespace devhost {

namespace {

// Stands in front of a driver's instance manager, and throws once.
class FailingInstances final : public IInstanceManager {
 public:
  // `at` calls are passed on before that.
  explicit FailingInstances(int at) : m_left(at) {}

  IInstanceManager& Wrap(IInstanceManager& instances) {
    m_instances = &instances;
    return *this;
  }
  bool HasThrown() const { return m_left < 0; }
  void StopThrowing() { m_isOver = true; }

  bool RegisterQuery(const char* iid, void* instance) override {
    Count();
    return m_instances->RegisterQuery(iid, instance);
  }
  void UnregisterQuery(const char* iid) override { m_instances->UnregisterQuery(iid); }
  void* Query(const char* iid) override {
    // The base library of drivers looks for its host.
    if (std::string(iid) == ISNMPConfigurationAgent_IID) {
      Count();
    }
    return m_instances->Query(iid);
  }

 private:
  void Count() {
    if (!m_isOver && m_left-- == 0) {
      throw std::runtime_error("the host has no memory");
    }
  }

  IInstanceManager* m_instances = nullptr;
  int m_left;
  bool m_isOver = false;
};

// Lets an agent come, whatever comes out of it: an exception of the host may pass through the device.
void LetAgentCome(Bench& bench) {
  try {
    bench.AgentArrives();
  } catch (const Violation&) {
    return;
  }
}

void ExpectToBeThere(Bench& bench, const std::string& after) {
  const std::size_t before = bench.CountOf("AddSNMPDevice");
  bench.AgentLeaves();
  bench.AgentArrives();
  Expect(bench.CountOf("AddSNMPDevice") > before, "the device is not announced any more after " + after + " has thrown",
         "AgentAvailable");
  bench.Stop();
}

// One life in which that call of the instance manager throws. Returns whether there was such a call.
bool LoseOneCall(Trial& trial, int at) {
  FailingInstances instances(at);
  Bench bench(trial);
  const Bench::Wrap wrap = [&instances](IInstanceManager& real) -> IInstanceManager& { return instances.Wrap(real); };
  bench.AgentArrives();
  std::string problem = bench.TryLoadThrough(wrap);
  if (problem.empty()) {
    LetAgentCome(bench);
  }
  instances.StopThrowing();
  if (!problem.empty()) {
    problem = bench.TryLoadThrough(wrap);
  }
  if (!problem.empty() || bench.Published().empty()) {
    // A device that did not come up has said so in the log.
    return instances.HasThrown();
  }
  ExpectToBeThere(bench, "the host");
  return instances.HasThrown();
}

// Throws Blocked where the device is not announced when nothing throws.
void NeedsAnAnnouncement(Trial& trial) {
  Bench bench(trial);
  bench.Load();
  bench.GetDevice();
  bench.AgentArrives();
  if (bench.CountOf("AddSNMPDevice") == 0) {
    throw Blocked("the device is not announced: see life-device-first");
  }
}

void LosesNothing(Trial& trial) {
  NeedsAnAnnouncement(trial);
  constexpr int kMostCalls = 20;
  for (int at = 0; at != kMostCalls && LoseOneCall(trial, at); ++at) {
  }
  Bench bench(trial);
  bench.Load();
  bench.GetDevice();
  bool hasThrown = false;
  bench.Agent().onCall = [&hasThrown](const AgentCall& call) {
    if (call.device != nullptr && !hasThrown) {
      hasThrown = true;
      throw std::runtime_error("the agent has no memory");
    }
  };
  LetAgentCome(bench);
  ExpectToBeThere(bench, "the agent");
}

void ThrowsStandardExceptions(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    std::filesystem::remove_all(bench.FolderOf(Bench::kDevice));
    for (const std::function<void(Device&)>& operation : Operations()) {
      try {
        operation(device);
      } catch (const std::exception&) {
        continue;
      }
    }
  });
}

}  // namespace

std::vector<Check> ThrowChecks() {
  return {
      {"throw-service", Severity::Contract, Level::Full, "",
       "A device that has seen an exception of the host or the agent is announced again later.",
       "Query, RegisterQuery and AddSNMPDevice throw once each. The exception may come out of the operation. Let objects\n"
       "clear up, so that no flag stays set on the way out.",
       &LosesNothing},
      {"throw-type", Severity::Practice, Level::Full, "", "What comes out of an operation is a std::exception.",
       "The host puts its text into the log. Tried while the folder of the device is missing.", &ThrowsStandardExceptions},
  };
}

}  // namespace devhost

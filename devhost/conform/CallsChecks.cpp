// Groups "calls", "threads", "secrets" and "actions": what happens around the operations of a device.
#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>
#include <utility>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Clock = std::chrono::steady_clock;
using D = ISupportSNMP;

void WorksWithoutAnAgent(Trial& trial) {
  Bench bench(trial);
  bench.Load();
  bench.Act([&bench] {
    Device device = bench.GetDevice();
    CallAll(device);
  });
}

void LivesUntilTheCallIsOver(Trial& trial) {
  const Profile::Commands& commands = trial.profile.claims.at("withdraws");
  if (commands.out.empty()) {
    throw Blocked("the claim withdraws has no commands; allowed: out=\"...\" back=\"...\"");
  }
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) {
    for (const std::function<void(Device&)>& operation : Operations()) {
      bool isWithdrawn = false;
      bench.SetInside([&] {
        if (!std::exchange(isWithdrawn, true)) {
          bench.SendCommand(commands.out);
        }
      });
      operation(device);
      bench.SetInside(nullptr);
      if (isWithdrawn) {
        bench.SendCommand(commands.back);
      }
    }
  });
  Expect(bench.CountOf("DeleteSNMPDevice") != 0,
         "DeleteSNMPDevice was not called when the device was withdrawn from inside");
}

void WorksFromInsideItsCalls(Trial& trial) {
  Bench bench(trial);
  bench.Load();
  bench.GetDevice();
  bool isNested = false;
  bench.Agent().onCall = [&](const AgentCall& call) {
    // Not for the calls of the operations themselves.
    if (call.device != nullptr && !std::exchange(isNested, true)) {
      Device device(*call.device, trial.trail);
      CallAll(device);
    }
  };
  bench.AgentArrives();
  if (!isNested) {
    throw Blocked("the device was not announced: see life-device-first");
  }
}

void CallsNoServiceFromAThread(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) { CallAll(device); });
  // A thread may do its work when nobody calls the driver.
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(500);
  while (bench.Reports(true).empty() && Clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  const std::vector<std::string> reports = bench.Reports(true);
  Expect(reports.empty(), reports.empty() ? "" : reports.back());
}

void KeepsTheManners(Trial& trial) {
  Bench bench(trial);
  std::size_t before = 0;
  bench.ActOnDevice([&](Device& device) {
    before = bench.Reports(false).size();
    CallAll(device);
  });
  const std::vector<std::string> reports = bench.Reports(false);
  Expect(reports.size() == before, reports.empty() ? "" : reports.back());
}

std::size_t Threads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

void LeavesNoThread(Trial& trial) {
  const std::size_t before = Threads();
  Bench bench(trial);
  bench.ActOnDevice([&](Device& device) { CallAll(device); });
  bench.Stop();
  const std::size_t after = Threads();
  Expect(after <= before, Counted(after - before, "thread") + " of the driver " + (after - before == 1 ? "is" : "are") +
                              " left when it has been destroyed");
}

void NeverLogsACommunity(Trial& trial) {
  Bench bench(trial);
  const std::string secret = trial.RandomText();
  bench.ActOnDevice([&](Device& device) {
    device.Call("SetCommunityReadSetting", &D::SetCommunityReadSetting, secret);
    device.Call("SetCommunityWriteSetting", &D::SetCommunityWriteSetting, secret);
    device.AddTrap({"192.0.2.1", secret, "162"});
    const std::string file = "rocommunity " + secret + "\n";
    std::string text;
    device.CopyFrom(text);
    device.CopyTo(file);
    // A folder that is gone, for a device that has its file there, so that it has something to complain about.
    std::filesystem::remove_all(bench.FolderOf(Bench::kDevice));
    device.TryCopyTo(file);
    device.CopyFrom(text);
  });
  bench.Stop();
  for (const auto& [line, slot] : bench.LogWithSlots()) {
    Expect(line.find(secret) == std::string::npos, "a community stands in the log", slot);
  }
}

void ActionsComeBack(Trial& trial) {
  Bench bench(trial);
  bench.ActOnDevice([](Device& device) {
    device.Call("RebootController", &D::RebootController);
    device.Call("StopMasterAgent", &D::StopMasterAgent);
    device.Call("StartMasterAgent", &D::StartMasterAgent);
  });
}

}  // namespace

std::vector<Check> CallsChecks() {
  return {
      {"calls-without-agent", Severity::Contract, Level::Basic, "", "Operations work in a project without an agent.",
       "Query returns null then, also in AgentAvailable and in the destructor.", &WorksWithoutAnAgent},
      {"calls-nested", Severity::Contract, Level::Basic, "",
       "Operations work from inside of the device's own call of AddSNMPDevice.",
       "An agent may ask a device at once when it is announced. So a driver holds no lock while it calls the agent, and "
       "its\n"
       "device is ready before it is announced.",
       &WorksFromInsideItsCalls},
      {"calls-withdrawn-inside", Severity::Contract, Level::Full, "withdraws",
       "A device that withdraws itself from inside an operation lives until that has returned.",
       "The command of the claim is sent to the driver while it calls the host or the agent from inside an operation. The\n"
       "agent finishes what it is doing with the device. After the operation the other command announces it again.",
       &LivesUntilTheCallIsOver},
      {"calls-manners", Severity::Contract, Level::Basic, "", "No operation breaks a rule of the host.",
       "The host reports what drivers must not do: docs/when-it-goes-wrong.md explains its words.", &KeepsTheManners},
      {"threads-host", Severity::Contract, Level::Basic, "",
       "The host and the agent are called on the host's thread only, and during a call of the host.",
       "Neither host nor agent has locks for this, nor has the log. A thread of a driver leaves its result where the next "
       "call\n"
       "finds it. The host is called by nobody for half a second, too.",
       &CallsNoServiceFromAThread},
      {"threads-left", Severity::Contract, Level::Basic, "", "No thread of a driver lives longer than the driver.",
       "The host unloads the module behind the driver, and with it the code that the thread executes. Join it in the\n"
       "destructor.",
       &LeavesNoThread},
      {"secrets-log", Severity::Contract, Level::Basic, "", "No community stands in the log.",
       "Everybody who looks after a controller reads its log. Say which setting, not what it holds.", &NeverLogsACommunity},
      {"actions-return", Severity::Contract, Level::Full, "safe-actions", "The three actions come back, and throw nothing.",
       "They need not wait for the controller. They are called only when the profile claims safe-actions, since they would\n"
       "reboot a real one.",
       &ActionsComeBack},
  };
}

}  // namespace devhost

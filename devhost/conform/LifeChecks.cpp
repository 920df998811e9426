// Group "life": a driver is made, comes up, meets agents, and goes.
#include <malloc.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Kind = Occurrence::Kind;

void ExpectNone(const std::vector<std::string>& lines) {
  Expect(lines.empty(), lines.empty() ? "" : lines.front());
}

void CreatesADriverEachTime(Trial& trial) {
  Bench bench(trial);
  for (const unsigned long id : {Bench::kDevice, Bench::kDevice + 1}) {
    const std::string problem = bench.TryLoad(id);
    Expect(problem.empty(), problem);
  }
  const std::vector<ISupportSNMP*> devices = bench.Published();
  Expect(devices.size() < 2 || devices[0] != devices[1], "two drivers of the module have published one device");
}

void Initializes(Trial& trial) {
  Bench bench(trial);
  bench.AgentArrives();
  bench.Load();
  ExpectNone(bench.Lines(Kind::Failure));
  ExpectNone(bench.Reports(false));
  // One that does not come to its end would not do so in the checks behind this one either.
  bench.Stop();
}

// The configuration with one attribute missing, empty, wrong or very long, and one without any.
std::vector<std::string> WrongConfigs(const std::string& config) {
  const XmlElement good = ReadXml(config);
  std::vector<std::string> wrong = {"<" + good.name + "/>"};
  for (std::size_t i = 0; i != good.attributes.size(); ++i) {
    XmlElement element = good;
    for (const std::string& value : {std::string(), std::string("\" no such value <"), std::string(1U << 20U, 'x')}) {
      element.attributes[i].value = value;
      wrong.push_back(XmlText(element, XmlStyle::Compact));
    }
    element.attributes.erase(element.attributes.begin() + static_cast<std::ptrdiff_t>(i));
    wrong.push_back(XmlText(element, XmlStyle::Compact));
  }
  return wrong;
}

void SaysWhatIsWrongInItsConfiguration(Trial& trial) {
  for (const std::string& config : WrongConfigs(trial.profile.ConfigIn(trial.folder + "/device12"))) {
    Bench bench(trial);
    const std::string problem = bench.TryLoad(Bench::kDevice, config);
    Expect(problem.empty(), "with " + Quoted(config) + ": " + problem);
    Expect(!bench.Published().empty() || !bench.OperatorLines().empty(),
           "with " + Quoted(config) + " there is neither a device nor a line in the log at level 3");
  }
}

void PublishesADevice(Trial& trial) {
  Bench bench(trial);
  bench.Load();
  const std::vector<ISupportSNMP*> devices = bench.Published();
  Expect(devices.size() == 1, "nothing is published under the identifier of ISupportSNMP after Initialize");
  const std::string problem = WhyNotADevice(devices.front(), trial.module);
  Expect(problem.empty(), problem);
}

void AnnouncesItselfToAnAgentThatIsThere(Trial& trial) {
  Bench bench(trial);
  bench.AgentArrives();
  bench.Load();
  const Device device = bench.GetDevice();
  const std::size_t count = bench.CountOf("AddSNMPDevice");
  Expect(count == 1, "AddSNMPDevice was called " + Counted(count, "time") +
                         " with the driver's id during Initialize, with an agent there; allowed: once");
  Expect(bench.Agent().calls.front().device == device.Get(),
         "AddSNMPDevice was called with another device than the one that is published");
  // One that no smaller type than the id's own can hold.
  constexpr unsigned long kLargeId = 1000001;
  bench.Load(kLargeId);
  Expect(bench.CountOf("AddSNMPDevice", kLargeId) == 1,
         "AddSNMPDevice was not called once with the driver's id, which is " + std::to_string(kLargeId));
}

void AnnouncesItselfToAnAgentThatComes(Trial& trial) {
  Bench bench(trial);
  bench.Load();
  bench.GetDevice();
  bench.AgentArrives();
  Expect(bench.CountOf("AddSNMPDevice") == 1, "AddSNMPDevice was not called once when an agent said that it is there");
  bench.AgentLeaves();
  bench.AgentArrives();
  Expect(bench.CountOf("AddSNMPDevice") == 2, "AddSNMPDevice was not called once when a second agent said that it is there");
}

void KeepsNoPointerToTheAgent(Trial& trial) {
  Bench bench(trial);
  bench.AgentArrives();
  bench.Load();
  bench.GetDevice();
  bench.AgentLeaves();
  bench.AgentArrives();
  bench.Stop();
  for (const AgentCall& call : bench.Agent().calls) {
    Expect(!call.hasLeft, call.operation + " was called on an agent that was not there any more");
  }
}

void WithdrawsWhatItHasGiven(Trial& trial) {
  const std::size_t objects = LiveXmlObjects();
  Bench bench(trial);
  bench.AgentArrives();
  bench.Load();
  const std::size_t before = bench.Reports(false).size();
  const bool isAnnounced = bench.CountOf("AddSNMPDevice") != 0;
  bench.Stop();
  const std::vector<std::string> reports = bench.Reports(false);
  Expect(reports.size() == before, reports.empty() ? "" : reports.back());
  const std::size_t count = bench.CountOf("DeleteSNMPDevice");
  Expect(count <= 1 && (count == 1 || !isAnnounced),
         "DeleteSNMPDevice was called " + Counted(count, "time") + " for a device that was announced; allowed: once");
  Expect(LiveXmlObjects() == objects, "handles to nodes, lists or documents of the host are left");
}

IInstanceManager& Unchanged(IInstanceManager& instances) {
  return instances;
}

void InitializesAgain(Trial& trial) {
  Bench bench(trial);
  bench.AgentArrives();
  const std::string problem = bench.TryLoadThrough(&Unchanged);
  const std::vector<ISupportSNMP*> before = bench.Published();
  if (!problem.empty() || before.empty() || !bench.Lines(Kind::Failure).empty()) {
    throw Blocked("there is no device to initialise again: see life-initialize");
  }
  const int result = bench.InitializeAgain();
  Expect(result == 0, "the second Initialize returned " + std::to_string(result) + "; allowed: 0", "Initialize");
  Expect(bench.Published() == before, "another device is published after the second Initialize", "Initialize");
  ExpectNone(bench.Reports(false));
}

// What must not grow.
struct Belongings {
  std::size_t descriptors;
  std::size_t threads;
  std::size_t mappings;
  std::size_t heap;
};

std::size_t EntriesOf(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

Belongings TakeStock() {
  std::ifstream maps("/proc/self/maps");
  const auto lines = std::count(std::istreambuf_iterator<char>(maps), std::istreambuf_iterator<char>(), '\n');
  return {EntriesOf("/proc/self/fd"), EntriesOf("/proc/self/task"), static_cast<std::size_t>(lines), ::mallinfo2().uordblks};
}

void LeavesNothingAfterManyLives(Trial& trial) {
  constexpr int kWarm = 20;
  constexpr int kLives = 200;
  constexpr std::size_t kMostMappings = 8;  // the allocator's own
  constexpr std::size_t kMostHeap = std::size_t{256} * 1024;
  const DriverModule stays(trial.module);
  Belongings before = {};
  for (int life = 0; life != kLives; ++life) {
    if (life == kWarm) {
      before = TakeStock();
    }
    Bench bench(trial);
    bench.AgentArrives();
    bench.Load();
    bench.Stop();
  }
  const Belongings after = TakeStock();
  if (after.threads > before.threads) {
    throw Blocked("threads are left, with their stacks: see threads-left");
  }
  const auto expect = [](std::size_t was, std::size_t is, std::size_t most, const char* what) {
    Expect(is <= was + most,
           std::to_string(is - std::min(is, was)) + " more " + what + " after " + std::to_string(kLives - kWarm) + " lives",
           "destructor");
  };
  expect(before.descriptors, after.descriptors, 0, "descriptors are open");
  expect(before.mappings, after.mappings, kMostMappings, "mappings are there");
  expect(before.heap, after.heap, kMostHeap, "bytes are in use");
}

}  // namespace

std::vector<Check> LifeChecks() {
  return {
      {"life-create", Severity::Contract, Level::Basic, "", "The factory makes a new driver each time, and throws nothing.",
       "A project may have many devices of one kind, each with a driver of its own from one module. IDriver.h lists the "
       "steps\n"
       "of a driver's life; an exception in one of them leaves the host without the driver.",
       &CreatesADriverEachTime},
      {"life-initialize", Severity::Contract, Level::Basic, "",
       "Initialize calls the base's Initialize first, and returns 0 with the configuration of the profile.",
       "The base remembers the driver's id, and its services are there from then on. A host reports a driver whose "
       "Initialize\n"
       "returns something else than 0. When the configuration is not the right one for this driver, give it in the profile.",
       &Initializes},
      {"life-publish", Severity::Contract, Level::Basic, "",
       "After Initialize one ISupportSNMP is published, as exactly this interface.",
       "The agent finds devices under ISupportSNMP_IID. A void* points to the interface that its identifier names, so a "
       "driver\n"
       "converts itself first: static_cast<ISupportSNMP*>(this).",
       &PublishesADevice},
      {"life-wrong-config", Severity::Contract, Level::Basic, "",
       "With a wrong configuration there is a line in the log at level 3, no device and no exception.",
       "Attributes of a project are written by hand. Each attribute of the configuration is left out, emptied, set to\n"
       "nonsense and to 1 MiB. A driver may do without it; one that cannot says why in the log, at the level for operators.",
       &SaysWhatIsWrongInItsConfiguration},
      {"life-agent-first", Severity::Contract, Level::Basic, "",
       "The device announces itself once in Initialize when the agent is already there.",
       "An agent calls AgentAvailable when it starts. A device that starts later has to look for it: Query the identifier "
       "of\n"
       "ISNMPConfigurationAgent and call AddSNMPDevice with the driver's id, an unsigned long. Tried with a small and a "
       "large "
       "one.",
       &AnnouncesItselfToAnAgentThatIsThere},
      {"life-device-first", Severity::Contract, Level::Basic, "",
       "The device announces itself once each time an agent calls AgentAvailable.",
       "The agent calls AgentAvailable on every published device each time it is initialised, and knows no device until it "
       "is\n"
       "announced.",
       &AnnouncesItselfToAnAgentThatComes},
      {"life-agent-gone", Severity::Contract, Level::Basic, "",
       "The device calls the agent that is there, and never one that has left.",
       "The pointer that Query returns is good until its publisher withdraws it. Ask again before each use; the next agent "
       "is\n"
       "at another address.",
       &KeepsNoPointerToTheAgent},
      {"life-withdraws", Severity::Contract, Level::Basic, "",
       "A driver that is destroyed takes back its device, its interface, its listeners and its handles, each once.",
       "The agent would call a device that it still knows, and the module's code is gone by then. The destructor calls\n"
       "UnregisterQuery and DeleteSNMPDevice, unless there is no agent any more.",
       &WithdrawsWhatItHasGiven},
      {"life-initialize-again", Severity::Contract, Level::Full, "",
       "A second Initialize returns 0 and leaves the device published once.",
       "IDriver.h allows hosts to call Initialize several times. Publish and start once, and read the configuration as\n"
       "often as it comes.",
       &InitializesAgain},
      {"life-again", Severity::Contract, Level::Full, "",
       "After 200 lives there are no more descriptors, mappings and memory in use than after 20.",
       "A controller loads its project many times before it is started again.", &LeavesNothingAfterManyLives},
  };
}

}  // namespace devhost

// Measures the agent's work on the variables of a project, beside the host's share of it and beside plain std::map work on
// the same keys, all in one run. Operations: index (a project was loaded), apply (set the saved flags on the variables),
// write (the persisted state), read (the persisted state), remove (one device of the project).
//
// Every figure is the best of several runs, in nanoseconds for each variable (for remove: for each removed variable); look
// at the ratios. "host" makes the same calls into XML and variables without the agent. Memory is the growth of the process's
// peak while the operation runs, in bytes for each variable.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/BenchHost.h"
#include "bench/Measure.h"
#include "host/H7XML.h"
#include "host/ToString.h"
#include "tests/support/AgentAccess.h"

namespace {

constexpr unsigned long kVariablesOfADevice = 100;

// A project of `count` variables, and an agent that knows it.
class Project {
 public:
  explicit Project(unsigned long variableCount) : count(variableCount) {
    for (unsigned long i = 0; i != count; ++i) {
      devhost::VariableEntry entry;
      entry.deviceId = 1 + i / kVariablesOfADevice;
      entry.variableId = 1 + i % kVariablesOfADevice;
      entry.name = "variable " + std::to_string(i);
      entry.trapEnabled = i % 2 == 0;
      host.variables.Add(entry);
      keys.emplace_back(entry.deviceId, entry.variableId);
    }
    agent = std::make_unique<SNMPConfigurationAgent>(host);
    access = std::make_unique<SNMPConfigurationAgentTestAccess>(*agent);
    agent->BuildVariableList(access->deviceVariables, false, false);
    state = agent->GetPersistState(0);
    agent->FromXml(state.Get());
  }

  const unsigned long count;
  BenchHost host;
  std::vector<VariableKey> keys;
  std::unique_ptr<SNMPConfigurationAgent> agent;
  std::unique_ptr<SNMPConfigurationAgentTestAccess> access;
  h7::auto_com<H7XML::INode> state;
};

Project& ProjectOf(unsigned long count) {
  static std::unique_ptr<Project> project;
  if (!project || project->count != count) {
    project.reset();
    project = std::make_unique<Project>(count);
  }
  return *project;
}

// Each of the following does one operation once, with the agent, with the host alone, or with a plain map.

void IndexAgent(Project& project) {
  VariableMap map;
  project.agent->BuildVariableList(map, false, false);
  benchmark::DoNotOptimize(map.size());
}

void IndexHost(Project& project) {
  std::string xml;
  project.host.variables.ListVariables(xml, false);
  const h7::auto_com<H7XML::IDocument> document = H7XML::CreateXmlDocument(xml);
  const h7::auto_com<H7XML::INodeList> list = document->GetRootElement()->GetChildren();
  for (h7::auto_com<H7XML::INode> node = list->First(); node; node = list->Next()) {
    benchmark::DoNotOptimize(node->GetNamedULong("hidden"));
    benchmark::DoNotOptimize(
        project.host.variables.FindVariable(node->GetNamedULong("deviceid"), node->GetNamedULong("variableid")));
  }
}

void IndexPlain(Project& project) {
  VariableMap map;
  for (const VariableKey& key : project.keys) {
    map[key] = nullptr;
  }
  benchmark::DoNotOptimize(map.size());
}

void ApplyAgent(Project& project) {
  project.agent->ApplySNMPTrapEnabled(project.access->deviceVariables);
}

void ApplyHost(Project& project) {
  for (const auto& entry : project.access->deviceVariables) {
    benchmark::DoNotOptimize(entry.second->TrapEnabled() = true);
  }
}

void ApplyPlain(Project& project) {
  for (const auto& saved : project.access->savedTrapFlags) {
    benchmark::DoNotOptimize(project.access->deviceVariables.find(saved.first));
  }
}

void WriteAgent(Project& project) {
  benchmark::DoNotOptimize(project.agent->GetPersistState(0).Get());
}

void WriteHost(Project& project) {
  const h7::auto_com<H7XML::INode> root = H7XML::CreateXmlNode("variables", "");
  for (const VariableKey& key : project.keys) {
    h7::auto_com<H7XML::INode> node;
    H7XML::Create(node.Receive());
    node->SetName("variable");
    node->SetValue("");
    node->SetNamedULong("deviceid", key.first);
    node->SetNamedULong("variableid", key.second);
    node->SetNamedString("name", "variable 100000");
    node->SetNamedString("snmpTrapEnabled", h7::ToString(true));
    root->AppendChild(*node);
  }
}

void WritePlain(Project& project) {
  unsigned long sum = 0;
  for (const auto& entry : project.access->deviceVariables) {
    sum += entry.first.second;
  }
  benchmark::DoNotOptimize(sum);
}

void ReadAgent(Project& project) {
  project.agent->FromXml(project.state.Get());
}

void ReadHost(Project& project) {
  const h7::auto_com<H7XML::INodeList> list = project.state->GetChild("variables")->GetChildren();
  for (h7::auto_com<H7XML::INode> node = list->First(); node; node = list->Next()) {
    benchmark::DoNotOptimize(node->GetNamedULong("deviceid"));
    benchmark::DoNotOptimize(node->GetNamedULong("variableid"));
    benchmark::DoNotOptimize(node->GetNamedBool("snmpTrapEnabled"));
  }
}

void ReadPlain(Project& project) {
  TrapEnabledMap map;
  for (const VariableKey& key : project.keys) {
    map[key] = true;
  }
  benchmark::DoNotOptimize(map.size());
}

// Removes the last device of the project. That is the worst case, because every erasure walks the whole map again.
// Afterwards the device is added again.
void RemoveAgent(Project& project) {
  const unsigned long device = project.keys.back().first;
  project.agent->RemoveFromMap(project.access->deviceVariables, device);
  for (const VariableKey& key : project.keys) {
    if (key.first == device) {
      project.agent->AddToMap(project.access->deviceVariables, key.first, key.second);
    }
  }
}

void RemovePlain(Project& project) {
  const unsigned long device = project.keys.back().first;
  VariableMap& map = project.access->deviceVariables;
  std::vector<VariableMap::node_type> taken;
  for (VariableMap::iterator entry = map.lower_bound(VariableKey(device, 0));
       entry != map.end() && entry->first.first == device;) {
    taken.push_back(map.extract(entry++));
  }
  for (VariableMap::node_type& node : taken) {
    map.insert(std::move(node));
  }
}

struct Operation {
  const char* name;
  void (*agent)(Project&);
  void (*host)(Project&);  // null: the operation does not call the host
  void (*plain)(Project&);
};

const Operation kOperations[] = {{"index", IndexAgent, IndexHost, IndexPlain},
                                 {"apply", ApplyAgent, ApplyHost, ApplyPlain},
                                 {"write", WriteAgent, WriteHost, WritePlain},
                                 {"read", ReadAgent, ReadHost, ReadPlain},
                                 {"remove", RemoveAgent, nullptr, RemovePlain}};

const unsigned long kCounts[] = {1000, 100000, 1000000};

std::string NameOf(const Operation& operation, const char* who, unsigned long count) {
  return std::string(operation.name) + "/" + who + "/" + std::to_string(count);
}

void Register(const Operation& operation, const char* who, void (*work)(Project&), unsigned long count) {
  benchmark::RegisterBenchmark(NameOf(operation, who, count).c_str(),
                               [work, count](benchmark::State& state) {
                                 Project& project = ProjectOf(count);
                                 for (auto iteration : state) {
                                   static_cast<void>(iteration);
                                   work(project);
                                 }
                               })
      ->Unit(benchmark::kNanosecond)
      ->MinTime(0.05)
      ->Repetitions(3);
}

void PrintTable(std::map<std::string, double>& times) {
  std::printf("%-10s %9s %12s %12s %12s %11s %11s %10s\n", "operation", "variables", "agent ns/var", "host ns/var",
              "map ns/var", "agent:host", "agent:map", "peak B/var");
  for (const Operation& operation : kOperations) {
    for (const unsigned long count : kCounts) {
      const double each = static_cast<double>(operation.host == nullptr ? kVariablesOfADevice : count);
      const double agent = times[NameOf(operation, "agent", count)] / each;
      const double plain = times[NameOf(operation, "map", count)] / each;
      Project& project = ProjectOf(count);
      const double peak = static_cast<double>(PeakGrowth([&] { operation.agent(project); })) / each;
      std::printf("%-10s %9lu %12.1f ", operation.name, count, agent);
      if (operation.host == nullptr) {
        std::printf("%12s %12.1f %11s ", "-", plain, "-");
      } else {
        const double host = times[NameOf(operation, "host", count)] / each;
        std::printf("%12.1f %12.1f %11.2f ", host, plain, agent / host);
      }
      std::printf("%11.1f %10.0f\n", agent / plain, peak);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 2;
  }
  // Ordered by size, so that each project is made once.
  for (const unsigned long count : kCounts) {
    for (const Operation& operation : kOperations) {
      Register(operation, "agent", operation.agent, count);
      if (operation.host != nullptr) {
        Register(operation, "host", operation.host, count);
      }
      Register(operation, "map", operation.plain, count);
    }
  }
  BestTimes best;
  benchmark::RunSpecifiedBenchmarks(&best);
  PrintTable(best.times);
  return 0;
}

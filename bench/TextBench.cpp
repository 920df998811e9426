// Measures the agent's work on the text of an snmpd.conf, beside one copy of the same text, in one run. The foreign text has
// 5 KB, 1 MB and 50 MB. Operations: add (a managed section into a text without one), replace (the section of a text), read
// (the settings of a device from such a text), skip (reading a text without a section).
//
// Every figure is the best of several runs; look at the ratios. Memory is the growth of the process's peak while the agent
// serves one "SetDeviceState", in copies of the text. It counts the copies of the agent and of the device, but not the one
// that the device had before, which takes the place of the disk.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "bench/BenchDevice.h"
#include "bench/BenchHost.h"
#include "bench/BenchTexts.h"
#include "bench/Measure.h"
#include "config/SectionMerge.h"
#include "config/SectionReader.h"
#include "config/SectionWriter.h"
#include "device/SNMPDevice.h"
#include "tests/support/AgentAccess.h"

namespace {

managed_section::Settings SomeSettings() {
  managed_section::Settings settings;
  settings.communityRead = "our house";
  settings.communityWrite = "k3tchen";
  settings.agentXTimeout = "6";
  settings.agentXRetries = "2";
  settings.sysContact = "Ada, ground floor";
  settings.sysLocation = "Kitchen, left of the door";
  settings.sysName = "kitchen controller";
  settings.trapTargets = {TrapTarget("192.0.2.5", "house traps", "162"), TrapTarget("nms.example", "public", "")};
  return settings;
}

// A text of that size, before and after the agent writes it.
struct Texts {
  explicit Texts(std::size_t size) : foreign(ForeignText(size)), settings(SomeSettings()) { managed = Write(foreign); }

  std::string Write(const std::string& old) const {
    return managed_section::Merge(managed_section::Write(sections, settings, "Saturday, November, 21 2026 at 14:05:09"),
                                  old);
  }

  const managed_section::Texts sections = managed_section::FixedTexts();
  const std::string foreign;
  const managed_section::Settings settings;
  std::string managed;
};

const Texts& TextsOf(std::size_t size) {
  static std::unique_ptr<Texts> texts;
  static std::size_t made = 0;
  if (made != size) {
    texts.reset();
    texts = std::make_unique<Texts>(size);
    made = size;
  }
  return *texts;
}

void Add(const Texts& texts) {
  benchmark::DoNotOptimize(texts.Write(texts.foreign).data());
}

void Replace(const Texts& texts) {
  benchmark::DoNotOptimize(texts.Write(texts.managed).data());
}

void FillFrom(const std::string& text) {
  BenchDevice device{std::string()};
  SNMPDevice record(1, &device);
  managed_section::Fill(text, record);
  benchmark::DoNotOptimize(device.GetSysNameSetting().size());
}

void Read(const Texts& texts) {
  FillFrom(texts.managed);
}

void Skip(const Texts& texts) {
  FillFrom(texts.foreign);
}

void CopyForeign(const Texts& texts) {
  const std::string copy(texts.foreign);
  benchmark::DoNotOptimize(copy.data());
}

void CopyManaged(const Texts& texts) {
  const std::string copy(texts.managed);
  benchmark::DoNotOptimize(copy.data());
}

struct Operation {
  const char* name;
  void (*agent)(const Texts&);
  void (*copy)(const Texts&);
};

const Operation kOperations[] = {
    {"add", Add, CopyForeign}, {"replace", Replace, CopyManaged}, {"read", Read, CopyManaged}, {"skip", Skip, CopyForeign}};

struct Size {
  const char* name;
  std::size_t bytes;
};

const Size kSizes[] = {{"5 KB", 5000}, {"1 MB", 1000000}, {"50 MB", 50000000}};

std::string NameOf(const Operation& operation, const char* who, const Size& size) {
  return std::string(operation.name) + "/" + who + "/" + size.name;
}

void Register(const Operation& operation, const char* who, void (*work)(const Texts&), const Size& size) {
  benchmark::RegisterBenchmark(NameOf(operation, who, size).c_str(),
                               [work, size](benchmark::State& state) {
                                 const Texts& texts = TextsOf(size.bytes);
                                 for (auto iteration : state) {
                                   static_cast<void>(iteration);
                                   work(texts);
                                 }
                               })
      ->Unit(benchmark::kNanosecond)
      ->MinTime(0.1)
      ->Repetitions(5);
}

// Returns the peak memory of one request, in copies of the text.
double PeakOfARequest(const Size& size) {
  BenchDevice device(TextsOf(size.bytes).managed);
  BenchHost host;
  SNMPConfigurationAgent agent(host);
  agent.AddSNMPDevice(1, &device);
  const unsigned long growth = PeakGrowth([&] { agent.SetDeviceState(1); });
  return static_cast<double>(growth) / static_cast<double>(size.bytes);
}

void PrintTable(std::map<std::string, double>& times) {
  std::printf("%-9s %6s %12s %12s %11s\n", "operation", "text", "agent us", "copy us", "agent:copy");
  for (const Operation& operation : kOperations) {
    for (const Size& size : kSizes) {
      const double agent = times[NameOf(operation, "agent", size)] / 1000;
      const double copy = times[NameOf(operation, "copy", size)] / 1000;
      std::printf("%-9s %6s %12.2f %12.2f %11.2f\n", operation.name, size.name, agent, copy, agent / copy);
    }
  }
  std::printf("\npeak memory of one SetDeviceState, in copies of the text:");
  for (const Size& size : {kSizes[1], kSizes[2]}) {
    std::printf(" %.2f at %s%s", PeakOfARequest(size), size.name, size.bytes == kSizes[2].bytes ? "\n" : ",");
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 2;
  }
  // Ordered by size, so that each text is made once.
  for (const Size& size : kSizes) {
    for (const Operation& operation : kOperations) {
      Register(operation, "agent", operation.agent, size);
      Register(operation, "copy", operation.copy, size);
    }
  }
  BestTimes best;
  benchmark::RunSpecifiedBenchmarks(&best);
  PrintTable(best.times);
  return 0;
}

// Measures how long it takes to load the agent's module, and to initialise the agent, beside loading an empty module:
// `loading_bench AGENT_MODULE EMPTY_MODULE`. The modules take turns, and the best time of each counts.

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "bench/BenchHost.h"
#include "bench/LoadedAgent.h"
#include "host/H7XML.h"

namespace {

constexpr int kTurns = 2000;

struct Step {
  const char* name;
  double microseconds = std::numeric_limits<double>::max();
};

template <class Work>
void Time(Step& step, Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
  step.microseconds = std::min(step.microseconds, time.count());
}

void LoadOnly(const char* module) {
  void* const handle = ::dlopen(module, RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    std::fprintf(stderr, "loading_bench: %s\n", ::dlerror());
    std::exit(1);
  }
  ::dlclose(handle);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: loading_bench AGENT_MODULE EMPTY_MODULE\n");
    return 2;
  }
  BenchHost host;
  const auto config = H7XML::CreateXmlNode("config", "");
  Step steps[] = {{"an empty module, loaded and unloaded"},
                  {"the agent's module, loaded and unloaded"},
                  {"the same, and initialised between"}};
  for (int turn = 0; turn != kTurns; ++turn) {
    Time(steps[0], [argv] { LoadOnly(argv[2]); });
    Time(steps[1], [argv] { LoadOnly(argv[1]); });
    Time(steps[2], [&] { const LoadedAgent agent(argv[1], host, *config); });
  }
  std::printf("%-40s %8s %12s\n", "step", "us", "times empty");
  for (const Step& step : steps) {
    std::printf("%-40s %8.1f %12.2f\n", step.name, step.microseconds, step.microseconds / steps[0].microseconds);
  }
  return 0;
}

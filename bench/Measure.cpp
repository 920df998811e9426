#include "bench/Measure.h"

#include <malloc.h>

#include <cstdio>
#include <fstream>

namespace {

// Returns the peak in bytes, and starts a new one.
unsigned long TakePeak() {
  unsigned long kilobytes = 0;
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    std::sscanf(line.c_str(), "VmHWM: %lu kB", &kilobytes);
  }
  std::ofstream("/proc/self/clear_refs") << 5;
  return kilobytes * 1024;
}

}  // namespace

void BestTimes::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration) {
      continue;  // a mean or a deviation
    }
    const double time = run.GetAdjustedRealTime();
    const auto known = times.emplace(run.run_name.function_name, time);
    if (!known.second && time < known.first->second) {
      known.first->second = time;
    }
  }
}

unsigned long PeakGrowth(const std::function<void()>& work) {
  malloc_trim(0);  // memory that earlier work has freed must not hide what this work needs
  TakePeak();
  const unsigned long before = TakePeak();
  work();
  const unsigned long after = TakePeak();
  return after > before ? after - before : 0;  // the kernel counts pages in batches
}

#ifndef BENCH_MEASURE_H
#define BENCH_MEASURE_H

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

// Keeps the best time of each benchmark, in nanoseconds, by the benchmark's name.
class BestTimes final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override;

  std::map<std::string, double> times;
};

// Returns by how many bytes the process's peak of resident memory grows during `work`. The kernel counts whole pages.
unsigned long PeakGrowth(const std::function<void()>& work);

#endif

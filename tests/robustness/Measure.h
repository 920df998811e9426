#ifndef TESTS_ROBUSTNESS_MEASURE_H
#define TESTS_ROBUSTNESS_MEASURE_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace testsupport {

// The result of a run of devhost.
struct Measured {
  std::string output;    // standard output and error together; only the beginning and the end of a long output
  int status = 0;        // 128 + signal when a signal ended the program
  double seconds = 0;    // processor time, whatever else the machine does
  std::size_t peak = 0;  // the most memory, in bytes; meaningless under sanitizers
};

// One run of devhost in a folder, with nothing on standard input. It is ended after a minute of processor time.
class MeasuredRun {
 public:
  MeasuredRun(const std::vector<std::string>& words, const std::string& folder);
  // Ends the program when nobody has waited for it.
  ~MeasuredRun();
  MeasuredRun(const MeasuredRun&) = delete;
  MeasuredRun& operator=(const MeasuredRun&) = delete;

  // Reads the output until the program ends. Throws std::runtime_error when that takes more than five minutes.
  Measured Wait();

 private:
  int m_process = -1;
  int m_from = -1;
};

Measured Measure(const std::vector<std::string>& words, const std::string& folder);

// Writes the input of a test in a given size.
using WriteInput = std::function<void(std::size_t size)>;

// Returns how many times as much processor time a run takes when its input is four times as large. It is about 4 or less
// when the work grows with the input, and about 16 when it grows with its square. Returns the best of three tries, or the
// first one that is good enough, because other load on the machine only makes the result larger.
double GrowthOfTime(const WriteInput& write, std::size_t size, const std::vector<std::string>& words,
                    const std::string& folder);
inline constexpr double kMostGrowth = 9;

// Write files that are too large to be held in memory, because the memory of a child's parent counts as the child's.
void WriteRepeated(const std::string& path, const std::string& head, const std::string& unit, std::size_t times,
                   const std::string& tail);
void WriteNumbered(const std::string& path, const std::string& head,
                   const std::function<std::string(std::size_t number)>& unit, std::size_t times, const std::string& tail);

}  // namespace testsupport

#endif

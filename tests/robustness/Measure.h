#ifndef TESTS_ROBUSTNESS_MEASURE_H
#define TESTS_ROBUSTNESS_MEASURE_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace testsupport {

// What a run of devhost came to.
struct Measured {
  std::string output;    // standard output and error together; of a long one its beginning and its end
  int status = 0;        // 128 + signal when a signal ended it
  double seconds = 0;    // of processor time, whatever else the machine does
  std::size_t peak = 0;  // bytes of memory at most; of no meaning under sanitizers
};

// One run of devhost in a folder, with nothing on standard input. What takes more than a minute of processor time is ended.
class MeasuredRun {
 public:
  MeasuredRun(const std::vector<std::string>& words, const std::string& folder);
  // Ends it when nobody has waited for it.
  ~MeasuredRun();
  MeasuredRun(const MeasuredRun&) = delete;
  MeasuredRun& operator=(const MeasuredRun&) = delete;

  // Reads what it writes to its end. Throws std::runtime_error when that takes more than two minutes.
  Measured Wait();

 private:
  int m_process = -1;
  int m_from = -1;
};

Measured Measure(const std::vector<std::string>& words, const std::string& folder);

// Writes the input of a case for a size.
using WriteInput = std::function<void(std::size_t size)>;

// How many times as much processor time a run takes when its input is four times as large: about 4, or less, where work
// grows with the input, about 16 where it grows with its square. The best of three is taken, and a first one that is good
// enough is not repeated, since other load on the machine only makes it larger.
double GrowthOfTime(const WriteInput& write, std::size_t size, const std::vector<std::string>& words,
                    const std::string& folder);
inline constexpr double kMostGrowth = 9;

// Files too large to be held in memory: what a child's parent holds counts as the child's.
void WriteRepeated(const std::string& path, const std::string& head, const std::string& unit, std::size_t times,
                   const std::string& tail);
void WriteNumbered(const std::string& path, const std::string& head,
                   const std::function<std::string(std::size_t number)>& unit, std::size_t times, const std::string& tail);

}  // namespace testsupport

#endif

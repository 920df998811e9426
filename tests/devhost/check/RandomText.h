#ifndef TESTS_DEVHOST_CHECK_RANDOM_TEXT_H
#define TESTS_DEVHOST_CHECK_RANDOM_TEXT_H

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace devhost {

// Texts that are put together at random, the same in every run.
class RandomText {
 public:
  // At most `most` pieces, one after the other.
  std::string Next(const std::vector<std::string>& pieces, std::size_t most) {
    std::string text;
    for (std::size_t count = Below(most + 1); count != 0; --count) {
      text += pieces[Below(pieces.size())];
    }
    return text;
  }

 private:
  std::size_t Below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_engine); }
  std::mt19937 m_engine{1};
};

}  // namespace devhost

#endif

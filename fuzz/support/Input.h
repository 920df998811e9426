#ifndef FUZZ_SUPPORT_INPUT_H
#define FUZZ_SUPPORT_INPUT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace fuzz {

// Cuts an input into small decisions. Behind its end everything is 0, so every input has a meaning. Digits and letters mean
// what one would expect, so people can type seeds: '3' is 3 where there are up to sixteen choices.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

  bool AtEnd() const { return m_at == m_size; }
  unsigned char Byte() { return AtEnd() ? static_cast<unsigned char>(0) : m_data[m_at++]; }
  // Returns a number below `count`, which is a power of two.
  unsigned int Below(unsigned int count) { return Byte() % count; }
  bool Flag() { return Below(2) != 0; }
  // Returns a text of up to 15 parts that are hard for parsers. The input has their number, then one byte for each.
  std::string Text();
  // Returns the rest of the input.
  std::string Rest();

 private:
  const std::uint8_t* m_data;
  std::size_t m_size;
  std::size_t m_at = 0;
};

// Ends the run and shows both texts when they differ.
void RequireSame(std::string_view what, std::string_view actual, std::string_view expected);
// Ends the run with `what` when `holds` is false.
void Require(bool holds, std::string_view what);

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif

#include "devhost/fleet/Waves.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>

#include "devhost/text/Words.h"

namespace devhost {

namespace {

[[noreturn]] void Refuse(const std::string& problem) {
  throw WaveError(problem + "; allowed: rising numbers or shares, the last of them 100%, as in 1,10%,100%");
}

// A number, or a share of `count`.
std::size_t EndOf(const std::string& word, std::size_t count) {
  const bool isShare = !word.empty() && word.back() == '%';
  const char* const end = word.data() + word.size() - (isShare ? 1 : 0);
  std::uint32_t number = 0;
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  if (error != std::errc() || stop != end || number == 0 || (isShare && number > 100)) {
    Refuse(Quoted(word) + " is not a wave");
  }
  return isShare ? static_cast<std::size_t>((std::uint64_t{number} * count + 99) / 100) : number;
}

}  // namespace

std::vector<std::size_t> WaveEnds(const std::string& text, std::size_t count) {
  std::vector<std::size_t> ends;
  for (std::size_t at = 0; at <= text.size() && !text.empty();) {
    const std::size_t comma = std::min(text.find(',', at), text.size());
    const std::string word = text.substr(at, comma - at);
    const std::size_t end = std::min(EndOf(word, count), count);
    if (!ends.empty() && end < ends.back()) {
      Refuse("the wave " + Quoted(word) + " is smaller than the one before");
    }
    if (ends.empty() || end > ends.back()) {
      ends.push_back(end);
    }
    at = comma + 1;
  }
  if (text.empty()) {
    ends.push_back(count);
  }
  if (ends.back() != count) {
    Refuse("the last wave leaves out " + Counted(count - ends.back(), "device"));
  }
  return ends;
}

}  // namespace devhost

#include "devhost/text/TypedText.h"

#include <charconv>
#include <cstdint>

namespace devhost {

unsigned long ReadULong(std::string_view text) noexcept {
  constexpr char kWhiteSpace[] = " \t\r\n\f\v";
  const std::size_t begin = text.find_first_not_of(kWhiteSpace);
  if (begin == std::string_view::npos) {
    return 0;
  }
  text = text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end ? number : 0;
}

bool ReadBool(std::string_view text) noexcept {
  return text == "true" || text == "1";
}

}  // namespace devhost

#include "devhost/contract/TextKind.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <system_error>

namespace devhost {

namespace {

constexpr std::size_t kLongestLine = 255;

// Characters, not bytes: a schema can count nothing else.
std::size_t CharactersIn(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

bool IsLine(std::string_view text) {
  return text.find_first_of("\n\r") == std::string_view::npos && CharactersIn(text) <= kLongestLine;
}

bool IsNumber(std::string_view text, std::int64_t least, std::int64_t most) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  const std::string_view digits = text.substr(text.substr(0, 1) == "-" ? 1 : 0);
  const bool isPlain = text == "0" || (!digits.empty() && digits.front() != '0');
  return isPlain && error == std::errc() && stop == end && number >= least && number <= most;
}

bool IsDriverName(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789";
  constexpr std::string_view kAllowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
  return text.find_first_not_of(kAllowed) == std::string_view::npos &&
         text.find_first_not_of(kDigits) != std::string_view::npos;
}

}  // namespace

bool IsOfKind(TextKind kind, std::string_view text) {
  switch (kind) {
    case TextKind::Any:
      return true;
    case TextKind::Filled:
      return !text.empty();
    case TextKind::Line:
      return IsLine(text);
    case TextKind::FilledLine:
      return !text.empty() && IsLine(text);
    case TextKind::Switch:
      return text == "true" || text == "false" || text == "1" || text == "0";
    case TextKind::WrittenSwitch:
      return text == "true" || text == "false";
    case TextKind::Id:
      return IsNumber(text, 0, UINT32_MAX);
    case TextKind::SignedId:
      return IsNumber(text, INT32_MIN, INT32_MAX);
    case TextKind::Port:
      return text.empty() || IsNumber(text, 1, UINT16_MAX);
    case TextKind::DriverName:
      return IsDriverName(text);
  }
  return false;
}

const char* MeaningOf(TextKind kind) {
  switch (kind) {
    case TextKind::Any:
      return "any text";
    case TextKind::Filled:
      return "a text that is not empty";
    case TextKind::Line:
      return "one line of at most 255 characters";
    case TextKind::FilledLine:
      return "one line of 1 to 255 characters";
    case TextKind::Switch:
    case TextKind::WrittenSwitch:
      return "true or false";
    case TextKind::Id:
      return "a number from 0 to 4294967295, without sign, blanks or leading zeros";
    case TextKind::SignedId:
      return "a number from -2147483648 to 2147483647, without blanks or leading zeros";
    case TextKind::Port:
      return "a port from 1 to 65535, or nothing for the usual one";
    case TextKind::DriverName:
      return "letters, digits, \"-\", \"_\" and \".\", not digits alone";
  }
  return "";
}

}  // namespace devhost

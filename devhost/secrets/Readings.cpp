#include "devhost/secrets/Readings.h"

#include <array>
#include <charconv>
#include <utility>

namespace devhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;
// Nobody escapes a text more often.
constexpr std::size_t kMostLevels = 4;

struct Escape {
  std::size_t length = 0;  // 0 for none
  char character = '\0';
};

// The number of that many digits, or of all up to a semicolon when `digits` is 0.
Escape NumberAt(std::string_view text, std::size_t at, std::size_t digits, int base) {
  const std::size_t end = digits == 0 ? text.find(';', at) : at + digits;
  unsigned int code = 0;
  if (end == npos || end > text.size() || end - at > 8 ||
      std::from_chars(text.data() + at, text.data() + end, code, base).ptr != text.data() + end || end == at ||
      code > 0xFF) {
    return {};
  }
  return {end + (digits == 0 ? 1 : 0), static_cast<char>(code)};
}

Escape ReferenceAtFront(std::string_view text) {
  constexpr std::array<std::pair<std::string_view, char>, 5> kNames = {
      {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};
  for (const auto& [name, character] : kNames) {
    if (text.substr(0, name.size()) == name) {
      return {name.size(), character};
    }
  }
  const bool isHex = text.substr(0, 3) == "&#x";
  return text.substr(0, 2) != "&#" ? Escape() : NumberAt(text, isHex ? 3 : 2, 0, isHex ? 16 : 10);
}

Escape BackslashAtFront(std::string_view text) {
  constexpr std::string_view kLetters = "nrtbf\\\"'/";
  constexpr std::string_view kMeanings = "\n\r\t\b\f\\\"'/";
  const char letter = text.size() < 2 ? '\0' : text[1];
  const std::size_t known = letter == '\0' ? npos : kLetters.find(letter);
  if (known != npos) {
    return {2, kMeanings[known]};
  }
  return letter == 'x' ? NumberAt(text, 2, 2, 16) : letter == 'u' ? NumberAt(text, 2, 4, 16) : Escape();
}

Escape EscapeAtFront(std::string_view text) {
  switch (text.front()) {
    case '%':
      return NumberAt(text, 1, 2, 16);
    case '&':
      return ReferenceAtFront(text);
    case '\\':
      return BackslashAtFront(text);
    default:
      return {};
  }
}

// Undoes the escapes once. Returns whether there were any.
bool Unescape(Reading& reading) {
  Reading plain;
  for (std::size_t at = 0; at < reading.text.size();) {
    const Escape escape = EscapeAtFront(std::string_view(reading.text).substr(at));
    plain.text += escape.length == 0 ? reading.text[at] : escape.character;
    const std::size_t begin = at;
    at += escape.length == 0 ? 1 : escape.length;
    plain.places.push_back({reading.places[begin].begin, reading.places[at - 1].end});
  }
  const bool hadAny = plain.text.size() != reading.text.size();
  reading = std::move(plain);
  return hadAny;
}

int ValueOf(char c, std::string_view digits) {
  const std::size_t value = c == '\0' ? npos : digits.find(c);
  return value == npos ? -1 : static_cast<int>(value);
}

int HexDigit(char c) {
  return ValueOf(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c, "0123456789abcdef");
}

// How many bytes stand between two bytes in hexadecimal digits.
std::size_t SeparatorAtFront(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size() && std::string_view(" \t\n\r,:-").find(text[length]) != npos) {
    ++length;
  }
  const std::string_view mark = text.substr(length, 2);
  return length + (mark == "0x" || mark == "0X" || mark == "\\x" ? 2 : 0);
}

Reading FromHex(std::string_view text) {
  Reading reading;
  for (std::size_t at = 0; at < text.size();) {
    const int high = HexDigit(text[at]);
    const int low = at + 1 < text.size() ? HexDigit(text[at + 1]) : -1;
    const bool isByte = high >= 0 && low >= 0;
    reading.text += isByte ? static_cast<char>(high * 16 + low) : '\0';
    const std::size_t begin = at;
    at += isByte ? 2 : 1;
    reading.places.push_back({begin, at});
    at += isByte ? SeparatorAtFront(text.substr(at)) : 0;
  }
  return reading;
}

int Base64Digit(char c) {
  return ValueOf(c == '-' ? '+' : c == '_' ? '/' : c, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

// From the digit of that number on, in each run of digits: a text may stand anywhere in what was encoded.
Reading FromBase64(std::string_view text, std::size_t first) {
  Reading reading;
  std::size_t digits = 0;
  unsigned int bits = 0;
  std::size_t begin = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const int digit = Base64Digit(text[at]);
    if (digit >= 0) {
      bits = (bits << 6U) | static_cast<unsigned int>(digit);
      // Of four digits, each but the first one completes a byte.
      if (++digits > first && (digits - first) % 4 != 1) {
        reading.text += static_cast<char>((bits >> (2 * ((4 - (digits - first) % 4) % 4))) & 0xFFU);
        reading.places.push_back({begin, at + 1});
      }
      begin = at;
    } else if (text[at] != '\n' && text[at] != '\r') {  // long texts are cut into lines
      digits = 0;
      reading.text += '\0';
      reading.places.push_back({at, at + 1});
    }
  }
  return reading;
}

}  // namespace

std::vector<Reading> Unescaped(std::string_view text) {
  Reading reading;
  reading.text = text;
  reading.places.reserve(text.size());
  for (std::size_t at = 0; at != text.size(); ++at) {
    reading.places.push_back({at, at + 1});
  }
  std::vector<Reading> readings(1, reading);
  while (readings.size() <= kMostLevels && reading.text.find_first_of("%&\\") != npos && Unescape(reading)) {
    readings.push_back(reading);
  }
  return readings;
}

std::vector<Reading> Decoded(std::string_view text) {
  std::vector<Reading> readings(1, FromHex(text));
  for (std::size_t first = 0; first != 4; ++first) {
    readings.push_back(FromBase64(text, first));
  }
  return readings;
}

}  // namespace devhost

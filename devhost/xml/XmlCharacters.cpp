#include "devhost/xml/XmlCharacters.h"

#include <charconv>
#include <cstdint>

#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {
namespace {

// Whether XML 1.0 may carry the character at all.
bool IsXmlCharacter(std::uint32_t character) {
  if (character < 0x20) {
    return character == '\t' || character == '\n' || character == '\r';
  }
  return character < 0xD800 || (character > 0xDFFF && character < 0xFFFE) || (character > 0xFFFF && character <= 0x10FFFF);
}

// The offset behind the markup at `at` that is not an element and so holds no references; `at` when there is none.
std::size_t PassOver(std::string_view text, std::size_t at) {
  const std::string_view rest = text.substr(at);
  std::string_view begin;
  std::string_view end;
  if (StartsWith(rest, "<!--")) {
    begin = "<!--";
    end = "-->";
  } else if (StartsWith(rest, "<![CDATA[")) {
    begin = "<![CDATA[";
    end = "]]>";
  } else if (StartsWith(rest, "<?")) {
    begin = "<?";
    end = "?>";
  } else if (StartsWith(rest, "<!")) {
    // A document type: up to its own closing bracket.
    std::size_t depth = 0;
    for (std::size_t i = at; i != text.size(); ++i) {
      depth += text[i] == '<' ? 1U : 0U;
      if (text[i] == '>' && --depth == 0) {
        return i + 1;
      }
    }
    return text.size();
  } else {
    return at;
  }
  // "<!-->" opens a comment and does not close it.
  const std::size_t found = text.find(end, at + begin.size());
  return found == std::string_view::npos ? text.size() : found + end.size();
}

// `reference` is what stands between "&" and ";".
bool IsKnownReference(std::string_view reference) {
  if (!StartsWith(reference, "#")) {
    return reference == "amp" || reference == "lt" || reference == "gt" || reference == "quot" || reference == "apos";
  }
  const bool hexadecimal = StartsWith(reference, "#x");
  const std::string_view digits = reference.substr(hexadecimal ? 2 : 1);
  std::uint32_t character = 0;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, character, hexadecimal ? 16 : 10);
  return result.ec == std::errc() && result.ptr == end && IsXmlCharacter(character);
}

// Also finds the first element too many.
std::size_t FindBadMarkup(std::string_view text, std::string& problem) {
  std::size_t elements = 0;
  for (std::size_t i = text.find_first_of("<&"); i != std::string_view::npos; i = text.find_first_of("<&", i)) {
    if (text[i] == '<') {
      const std::size_t behind = PassOver(text, i);
      elements += behind == i && text.substr(i + 1, 1) != "/" ? 1U : 0U;
      if (elements > kMostXmlElements) {
        problem = "more than " + std::to_string(kMostXmlElements) + " elements; allowed: at most this many";
        return i;
      }
      i = behind == i ? i + 1 : behind;
      continue;
    }
    // The longest reference is short, but its digits may have leading zeros.
    const std::size_t end = text.find_first_of(";<& \t\r\n", i + 1);
    if (end == std::string_view::npos || text[end] != ';' || !IsKnownReference(text.substr(i + 1, end - i - 1))) {
      problem = "\"&\" begins no known reference; write \"&amp;\" for the character itself";
      return i;
    }
    i = end;
  }
  return std::string_view::npos;
}

}  // namespace

std::size_t XmlCharacterLength(std::string_view text) noexcept {
  if (text.empty()) {
    return 0;
  }
  const unsigned char first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) {
    return IsXmlCharacter(first) ? 1 : 0;
  }
  const std::size_t length = first >= 0xF0 && first < 0xF8 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 0;
  if (length == 0 || first >= 0xF8 || text.size() < length) {
    return 0;
  }
  std::uint32_t character = first & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i != length; ++i) {
    const unsigned char next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0U) != 0x80U) {
      return 0;
    }
    character = (character << 6U) | (next & 0x3FU);
  }
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  return character >= kSmallest[length] && IsXmlCharacter(character) ? length : 0;
}

std::size_t FindBadXmlCharacter(std::string_view text) noexcept {
  for (std::size_t i = 0; i < text.size();) {
    const unsigned char byte = static_cast<unsigned char>(text[i]);
    const std::size_t length = byte >= 0x20 && byte < 0x80 ? 1 : XmlCharacterLength(text.substr(i, 4));
    if (length == 0) {
      return i;
    }
    i += length;
  }
  return std::string_view::npos;
}

bool IsXmlNameByte(char byte, bool first) noexcept {
  const unsigned char code = static_cast<unsigned char>(byte);
  if (code >= 0x80 || byte == '_' || byte == ':' || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z')) {
    return true;
  }
  return !first && ((byte >= '0' && byte <= '9') || byte == '-' || byte == '.');
}

std::size_t FindXmlProblem(std::string_view text, std::string& problem) {
  const std::size_t badCharacter = FindBadXmlCharacter(text);
  if (badCharacter != std::string_view::npos) {
    problem = "a character that XML does not allow, or that is not UTF-8";
    return badCharacter;
  }
  return FindBadMarkup(text, problem);
}

}  // namespace devhost

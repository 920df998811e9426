#include "devhost/xml/XmlCharacters.h"

#include <cstdint>

namespace devhost {
namespace {

// Whether XML 1.0 may carry the character at all.
bool IsXmlCharacter(std::uint32_t character) {
  if (character < 0x20) {
    return character == '\t' || character == '\n' || character == '\r';
  }
  return character < 0xD800 || (character > 0xDFFF && character < 0xFFFE) || (character > 0xFFFF && character <= 0x10FFFF);
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

bool IsXmlNameByte(char byte, bool first) noexcept {
  const unsigned char code = static_cast<unsigned char>(byte);
  if (code >= 0x80 || byte == '_' || byte == ':' || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z')) {
    return true;
  }
  return !first && ((byte >= '0' && byte <= '9') || byte == '-' || byte == '.');
}

}  // namespace devhost

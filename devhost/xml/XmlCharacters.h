#ifndef DEVHOST_XML_XML_CHARACTERS_H
#define DEVHOST_XML_XML_CHARACTERS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace devhost {

// Whether XML 1.0 may carry the character at all.
bool IsXmlCharacter(std::uint32_t character) noexcept;

// How many bytes the UTF-8 character at the front of `text` has; 0 when it is none, or none that XML may carry.
std::size_t XmlCharacterLength(std::string_view text) noexcept;

// Whether an XML name may contain this byte, at its start or later. Bytes of characters beyond ASCII pass.
bool IsXmlNameByte(char byte, bool first) noexcept;

// An element takes many times its size in the text, so their number is bounded.
inline constexpr std::size_t kMostXmlElements = 4000000;

// Tells whether `text` is made of characters that XML carries and of references that it knows, comments and the like passed
// over, and of no more than kMostXmlElements elements. What the XML library overlooks when it parses is found here; all else
// is left to it. On a problem fills `problem` and returns its offset; otherwise returns npos.
std::size_t FindXmlProblem(std::string_view text, std::string& problem);

}  // namespace devhost

#endif

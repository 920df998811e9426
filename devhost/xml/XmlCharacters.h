#ifndef DEVHOST_XML_XML_CHARACTERS_H
#define DEVHOST_XML_XML_CHARACTERS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace devhost {

// How many bytes the UTF-8 character at the front of `text` has; 0 when there is none, or none that XML may carry.
std::size_t XmlCharacterLength(std::string_view text) noexcept;

// Where the first byte stands that begins no such character; npos when there is none.
std::size_t FindBadXmlCharacter(std::string_view text) noexcept;

// Whether an XML name may contain this byte, at its start or later. Bytes of characters beyond ASCII pass.
bool IsXmlNameByte(char byte, bool first) noexcept;

// Finds what the XML library overlooks when it parses: a character that XML cannot carry, a reference that it does not know
// (outside of comments and the like), and too many elements. Fills `problem` and returns its offset; npos when there is
// none.
std::size_t FindXmlProblem(std::string_view text, std::string& problem);

}  // namespace devhost

#endif

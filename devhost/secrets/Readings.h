#ifndef DEVHOST_SECRETS_READINGS_H
#define DEVHOST_SECRETS_READINGS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// Another way to read a text: what it says once an encoding is undone.
struct Reading {
  // Where a byte of `text` comes from in the text that was read.
  struct Place {
    std::size_t begin;
    std::size_t end;
  };

  std::string text;
  std::vector<Place> places;  // of each byte
};

// The text as it is, then with its escapes undone as often as there are any: %XX, references of XML, and those of quoted
// texts, such as \n, \" and \x1f. Never empty.
std::vector<Reading> Unescaped(std::string_view text);

// What the text says in hexadecimal digits, with or without blanks, commas, colons, hyphens or 0x between the bytes, and in
// base64. What is not in that encoding is a NUL byte.
std::vector<Reading> Decoded(std::string_view text);

}  // namespace devhost

#endif

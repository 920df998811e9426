#ifndef DEVHOST_SNMPD_DIRECTIVE_H
#define DEVHOST_SNMPD_DIRECTIVE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// A word of a directive, as the daemon cuts it.
struct DirectiveWord {
  std::string text;       // without the quotes around it, escapes resolved as the daemon resolves them
  std::size_t begin = 0;  // the bytes that it takes in the line, quotes included
  std::size_t end = 0;
  char quote = '\0';  // the quote that it began with, or none
};

// One line of an snmpd.conf that is neither a comment nor empty.
struct Directive {
  std::string keyword;               // in lower case: the daemon ignores case
  std::string rest;                  // what follows it, without the blanks around it, as it stands in the line
  std::size_t restBegin = 0;         // where that stands in the line
  std::vector<DirectiveWord> words;  // the same, cut into words
};

// The text with its ASCII letters in lower case. The daemon compares most words like that.
std::string InLowerCase(std::string_view text);

// Cuts a line, given without its line feed, as the daemon does. A section's name in brackets in front of the keyword is
// skipped. Nothing for a comment, an empty line, or a section's name alone.
std::optional<Directive> ReadDirective(std::string_view line);

}  // namespace devhost

#endif

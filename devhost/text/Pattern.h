#ifndef DEVHOST_TEXT_PATTERN_H
#define DEVHOST_TEXT_PATTERN_H

#include <memory>
#include <stdexcept>
#include <string>

namespace re2 {
class RE2;
}

namespace devhost {

// An expression that is refused; the text says why.
class PatternError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A POSIX extended regular expression over UTF-8, in which \d, \s, \w and \b may stand too. ^ and $ also match at the lines
// of a longer text, and a match lies within one of them. Of several matches at one place the longest counts. A byte of the
// text that is not UTF-8 is part of no match. Searching takes time in proportion to the text, and length and size of an
// expression are bounded: scripts come from anywhere, and expressions of the C library and of the standard library can take
// all time, all memory or the stack.
//
// Refused is an expression that is not UTF-8, and one that would match something else than people expect who know such
// expressions from elsewhere: a line feed, [=a=] and [.a.], \< and \>, {,N}. A backslash escapes inside brackets, too.
class Pattern {
 public:
  // Throws PatternError.
  explicit Pattern(const std::string& expression);
  ~Pattern();
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  // Whether some part of `text` matches.
  bool IsIn(const std::string& text) const;
  // `text` with every match replaced, the empty ones too. `replacement` holds no backslash.
  std::string ReplaceIn(std::string text, const std::string& replacement) const;

 private:
  std::unique_ptr<const re2::RE2> m_expression;
};

}  // namespace devhost

#endif

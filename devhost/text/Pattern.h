#ifndef DEVHOST_TEXT_PATTERN_H
#define DEVHOST_TEXT_PATTERN_H

#include <memory>
#include <stdexcept>
#include <string>

namespace re2 {
class RE2;
}

namespace devhost {

// A regular expression that is none, or that is too large; the text says why.
class PatternError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A POSIX extended regular expression over bytes, in which \d, \s, \w and \b may stand too. ^ and $ also match at the lines
// of a longer text, and a match lies within one of them. Of several matches at one place the longest counts. Searching takes
// time in proportion to the text, and length and size of an expression are bounded: scripts come from anywhere, and
// expressions of the C library and of the standard library can take all time, all memory or the stack.
//
// What would be compiled, and match something else than people expect who know such expressions from elsewhere, is refused:
// a line feed, [=a=] and [.a.], \< and \>, {,N}. A backslash escapes inside brackets, too.
class Pattern {
 public:
  // Throws PatternError.
  explicit Pattern(const std::string& expression);
  ~Pattern();
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  // Whether some part of `text` matches.
  bool IsIn(const std::string& text) const;
  // `text` with every match replaced; expressions that match the empty text end the search.
  std::string ReplaceIn(const std::string& text, const std::string& replacement) const;

 private:
  std::unique_ptr<const re2::RE2> m_expression;
};

}  // namespace devhost

#endif

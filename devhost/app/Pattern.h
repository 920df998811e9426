#ifndef DEVHOST_APP_PATTERN_H
#define DEVHOST_APP_PATTERN_H

#include <cstddef>
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
// time in proportion to the text, and compiling a bounded amount of memory, whatever the expression: scripts come from
// anywhere, and expressions of the C library and of the standard library can take all time, all memory or the stack.
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
  bool Find(const std::string& text, std::size_t from, std::size_t& start, std::size_t& end) const;

  std::unique_ptr<const re2::RE2> m_expression;
};

}  // namespace devhost

#endif

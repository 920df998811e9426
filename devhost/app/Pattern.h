#ifndef DEVHOST_APP_PATTERN_H
#define DEVHOST_APP_PATTERN_H

#include <regex.h>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace devhost {

// A regular expression that is none; the text says why.
class PatternError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A POSIX extended regular expression. ^ and $ also match at the lines of a longer text, and . never takes a line feed. (The
// standard library's own expressions recurse once for each character, which a file of some size does not survive.)
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

  regex_t m_expression;
};

}  // namespace devhost

#endif

#include "devhost/app/Pattern.h"

#include <new>

#include "devhost/app/Words.h"

namespace devhost {

Pattern::Pattern(const std::string& expression) : m_expression() {
  if (expression.find('\0') != std::string::npos) {
    throw PatternError(Quoted(expression) + " is no regular expression: it holds a NUL byte");
  }
  const int error = ::regcomp(&m_expression, expression.c_str(), REG_EXTENDED | REG_NEWLINE);
  if (error == REG_ESPACE) {
    throw std::bad_alloc();
  }
  if (error != 0) {
    char reason[256] = "";
    ::regerror(error, &m_expression, reason, sizeof(reason));
    throw PatternError(Quoted(expression) + " is no extended regular expression: " + reason);
  }
}

Pattern::~Pattern() {
  ::regfree(&m_expression);
}

bool Pattern::Find(const std::string& text, std::size_t from, std::size_t& start, std::size_t& end) const {
  // With a start and an end given, a NUL byte in the text is a character like any other, and
  // what stands in front of the start still decides whether a line begins there.
  regmatch_t match[1];
  match[0].rm_so = static_cast<regoff_t>(from);
  match[0].rm_eo = static_cast<regoff_t>(text.size());
  if (::regexec(&m_expression, text.c_str(), 1, match, REG_STARTEND) != 0) {
    return false;
  }
  start = static_cast<std::size_t>(match[0].rm_so);
  end = static_cast<std::size_t>(match[0].rm_eo);
  return true;
}

bool Pattern::IsIn(const std::string& text) const {
  std::size_t start = 0;
  std::size_t end = 0;
  return Find(text, 0, start, end);
}

std::string Pattern::ReplaceIn(const std::string& text, const std::string& replacement) const {
  std::string replaced;
  std::size_t from = 0;
  std::size_t start = 0;
  std::size_t end = 0;
  while (Find(text, from, start, end) && end > start) {
    replaced.append(text, from, start - from).append(replacement);
    from = end;
  }
  return replaced.append(text, from, std::string::npos);
}

}  // namespace devhost

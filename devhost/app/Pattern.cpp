#include "devhost/app/Pattern.h"

#include <re2/re2.h>

#include "devhost/app/Words.h"

namespace devhost {

namespace {

re2::RE2::Options OptionsOfPatterns() {
  re2::RE2::Options options;
  options.set_posix_syntax(true);
  options.set_perl_classes(true);
  options.set_word_boundary(true);
  options.set_longest_match(true);
  options.set_one_line(false);
  options.set_never_nl(true);
  options.set_encoding(re2::RE2::Options::EncodingLatin1);  // bytes: a text need not be UTF-8
  options.set_log_errors(false);
  return options;
}

// As itself or as \n: such an expression would be compiled and never match.
bool HasLineFeed(const std::string& expression) {
  for (std::size_t at = 0; at != expression.size(); ++at) {
    const bool escaped = expression[at] == '\\' && at + 1 != expression.size();
    at += escaped ? 1 : 0;
    if (expression[at] == '\n' || (escaped && expression[at] == 'n')) {
      return true;
    }
  }
  return false;
}

// For messages, in which an expression that is a secret is masked: so it stands there whole or not at all.
std::string Named(const std::string& expression) {
  return expression.size() <= 200 ? Quoted(expression) : "an expression of " + std::to_string(expression.size()) + " bytes";
}

// What the library says is wrong, without the part of the expression that it repeats behind a colon.
std::string Reason(const re2::RE2& expression) {
  const std::string& reason = expression.error();
  return reason.substr(0, reason.rfind(": " + expression.error_arg()));
}

}  // namespace

Pattern::Pattern(const std::string& expression) : m_expression(std::make_unique<re2::RE2>(expression, OptionsOfPatterns())) {
  if (HasLineFeed(expression)) {
    throw PatternError(Named(expression) + " holds a line feed; allowed: what lies within one line of the text");
  }
  if (m_expression->error_code() == re2::RE2::ErrorPatternTooLarge) {
    throw PatternError(Named(expression) + " is too large a regular expression; let its repeats repeat less");
  }
  if (!m_expression->ok()) {
    throw PatternError(Named(expression) + " is no extended regular expression: " + Reason(*m_expression));
  }
}

Pattern::~Pattern() = default;

bool Pattern::Find(const std::string& text, std::size_t from, std::size_t& start, std::size_t& end) const {
  // What stands in front of `from` still decides whether a line begins there.
  re2::StringPiece match;
  if (!m_expression->Match(text, from, text.size(), re2::RE2::UNANCHORED, &match, 1)) {
    return false;
  }
  start = static_cast<std::size_t>(match.data() - text.data());
  end = start + match.size();
  return true;
}

bool Pattern::IsIn(const std::string& text) const {
  return m_expression->Match(text, 0, text.size(), re2::RE2::UNANCHORED, nullptr, 0);
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

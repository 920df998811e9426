#include "devhost/text/Pattern.h"

#include <re2/re2.h>

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "devhost/text/Words.h"

namespace devhost {

namespace {

// Compiling takes time with the square of the depth, and a search may look at every instruction for each byte of the text.
constexpr std::size_t kLongest = 10000;
constexpr int kMostInstructions = 15000;

re2::RE2::Options OptionsOfPatterns() {
  re2::RE2::Options options;
  options.set_posix_syntax(true);
  options.set_perl_classes(true);
  options.set_word_boundary(true);
  options.set_longest_match(true);
  options.set_one_line(false);
  options.set_never_nl(true);
  options.set_log_errors(false);
  return options;
}

bool StartsWithOneOf(std::string_view text, std::initializer_list<std::string_view> starts) {
  return std::any_of(starts.begin(), starts.end(), [text](std::string_view start) { return StartsWith(text, start); });
}

// {,N}
bool IsRepeatWithoutLowerEnd(std::string_view text) {
  if (!StartsWithOneOf(text, {"{,"})) {
    return false;
  }
  const std::size_t end = text.find_first_not_of("0123456789", 2);
  return end != std::string_view::npos && end > 2 && text[end] == '}';
}

// Behind the brackets that begin a set: behind ^, and behind a ] that belongs to it.
std::size_t BeginOfSet(std::string_view expression, std::size_t at) {
  at += expression.substr(at, 1) == "^" ? 1 : 0;
  return at + (expression.substr(at, 1) == "]" ? 1 : 0);
}

// What the library would compile, but to match something else than it does elsewhere, or nothing at all; "" when there is
// no such thing. The expression may be wrong: then the library will say why.
std::string WhyMisleading(std::string_view expression) {
  bool inSet = false;
  bool negated = false;
  for (std::size_t at = 0; at < expression.size();) {
    const std::string_view rest = expression.substr(at);
    if (!negated && StartsWithOneOf(rest, {"\n", "\\\n", "\\n", "\\x0a", "\\x0A", "\\012"})) {
      return "holds a line feed; allowed: what lies within one line of the text";
    }
    if (inSet && StartsWithOneOf(rest, {"[=", "[."})) {
      return "holds [= or [. inside brackets; allowed: characters, ranges, and classes such as [:alpha:]";
    }
    if (!inSet && StartsWithOneOf(rest, {"\\<", "\\>"})) {
      return "holds \\< or \\>, which elsewhere are the edges of a word; write \\b for an edge, < and > for themselves";
    }
    if (!inSet && IsRepeatWithoutLowerEnd(rest)) {
      return "holds {,N}; write {0,N}";
    }
    if (rest.front() == '\\') {
      at += 2;
    } else if (!inSet && rest.front() == '[') {
      inSet = true;
      negated = rest.substr(1, 1) == "^";
      at = BeginOfSet(expression, at + 1);
    } else if (inSet && StartsWithOneOf(rest, {"[:"}) && rest.find(":]", 2) != std::string_view::npos) {
      at += rest.find(":]", 2) + 2;
    } else {
      inSet = inSet && rest.front() != ']';
      negated = negated && inSet;
      ++at;
    }
  }
  return "";
}

// What the library says is wrong, without the part of the expression that it repeats behind a colon.
std::string Reason(const re2::RE2& expression) {
  const std::string& reason = expression.error();
  return reason.substr(0, reason.rfind(": " + expression.error_arg()));
}

// The expression itself, when it may be compiled: a long one would take too long for the library to refuse it.
const std::string& Checked(const std::string& expression) {
  if (expression.size() > kLongest) {
    throw PatternError("the expression is too long; allowed: up to " + std::to_string(kLongest));
  }
  const std::string reason = WhyMisleading(expression);
  if (!reason.empty()) {
    throw PatternError("the expression " + reason);
  }
  return expression;
}

}  // namespace

Pattern::Pattern(const std::string& expression)
    : m_expression(std::make_unique<re2::RE2>(Checked(expression), OptionsOfPatterns())) {
  if (m_expression->error_code() == re2::RE2::ErrorPatternTooLarge || m_expression->ProgramSize() > kMostInstructions) {
    throw PatternError("the expression is too large a regular expression; let its repeats repeat less");
  }
  if (!m_expression->ok()) {
    throw PatternError("the expression is not an extended regular expression: " + Reason(*m_expression));
  }
}

Pattern::~Pattern() = default;

bool Pattern::IsIn(const std::string& text) const {
  return re2::RE2::PartialMatch(text, *m_expression);
}

std::string Pattern::ReplaceIn(std::string text, const std::string& replacement) const {
  re2::RE2::GlobalReplace(&text, *m_expression, replacement);
  return text;
}

}  // namespace devhost

#include "devhost/app/Pattern.h"

#include <algorithm>
#include <cctype>
#include <new>
#include <vector>

#include "devhost/app/Words.h"

namespace devhost {

namespace {

constexpr std::size_t kMaximumLength = 1000;
constexpr std::size_t kMaximumDepth = 50;
constexpr std::size_t kMaximumCopies = 10000;

// The library compiles groups by recursion and writes repeated parts out, repeats of repeats included: a short expression
// can take the stack or all memory. This walks over an expression that may be none and measures what it would become.
class Size {
 public:
  explicit Size(const std::string& expression) : m_expression(expression) { Measure(); }

  std::size_t Depth() const { return m_deepest; }
  // How many single characters the expression has when every repeat is written out; not counted beyond the limit.
  std::size_t Copies() const { return m_largest; }

 private:
  // A group that is open: what it has come to, and its last part, which a repeat may follow.
  struct Group {
    std::size_t sum = 0;
    std::size_t last = 0;
  };

  void Measure() {
    while (m_at < m_expression.size()) {
      const char character = m_expression[m_at++];
      if (character == '(') {
        m_groups.emplace_back();
        m_deepest = std::max(m_deepest, m_groups.size() - 1);
      } else if (character == ')' && m_groups.size() > 1) {
        const std::size_t size = m_groups.back().sum;
        m_groups.pop_back();
        Append(size);
      } else if (character == '+') {
        Repeat(2);  // x+ is written out as xx*
      } else if (character == '{') {
        Repeat(Count());
      } else if (character != '*' && character != '?') {
        SkipRest(character);
        Append(1);
      }
    }
  }

  void SkipRest(char character) {
    if (character == '\\') {
      ++m_at;
    } else if (character == '[') {
      // A bracket right at the start stands for itself. Classes such as [:alpha:] end one bracket too early here, which
      // makes the measure larger, not smaller.
      m_at += m_at < m_expression.size() && m_expression[m_at] == '^' ? 1 : 0;
      m_at = std::min(m_expression.find(']', m_at + 1), m_expression.size() - 1) + 1;
    }
  }

  // The largest number between braces; one more when there is no upper end.
  std::size_t Count() {
    std::size_t largest = 1;
    std::size_t number = 0;
    for (; m_at < m_expression.size() && m_expression[m_at] != '}'; ++m_at) {
      const char character = m_expression[m_at];
      const bool digit = std::isdigit(static_cast<unsigned char>(character)) != 0;
      number = digit ? std::min(kMaximumCopies, 10 * number + static_cast<std::size_t>(character - '0')) : 0;
      largest = std::max(largest, number);
    }
    const bool open = m_expression[m_at - 1] == ',';
    ++m_at;
    return largest + (open ? 1 : 0);
  }

  void Append(std::size_t size) {
    Group& group = m_groups.back();
    group.last = size;
    Add(group, size);
  }

  void Repeat(std::size_t times) {
    Group& group = m_groups.back();
    Add(group, group.last * (times - 1));
    group.last = std::min(group.last * times, kMaximumCopies + 1);
  }

  void Add(Group& group, std::size_t size) {
    group.sum = std::min(group.sum + size, kMaximumCopies + 1);
    m_largest = std::max(m_largest, group.sum);
  }

  const std::string& m_expression;
  std::size_t m_at = 0;
  std::vector<Group> m_groups{1};
  std::size_t m_deepest = 0;
  std::size_t m_largest = 0;
};

void RefuseTooLarge(const std::string& expression) {
  if (expression.size() > kMaximumLength) {
    throw PatternError("the regular expression has " + std::to_string(expression.size()) + " characters; allowed: up to " +
                       std::to_string(kMaximumLength));
  }
  const Size size(expression);
  if (size.Depth() > kMaximumDepth) {
    throw PatternError("the regular expression has groups in groups, " + std::to_string(size.Depth()) +
                       " deep; allowed: up to " + std::to_string(kMaximumDepth));
  }
  if (size.Copies() > kMaximumCopies) {
    throw PatternError("the regular expression is too large when its repeats are written out; allowed: up to " +
                       std::to_string(kMaximumCopies) + " characters");
  }
}

}  // namespace

Pattern::Pattern(const std::string& expression) : m_expression() {
  if (expression.find('\0') != std::string::npos) {
    throw PatternError(Quoted(expression) + " is no regular expression: it holds a NUL byte");
  }
  RefuseTooLarge(expression);
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

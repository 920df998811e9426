#include "devhost/text/Difference.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr std::size_t kShort = 100;
constexpr std::size_t kBefore = 40;  // how much of a long line is shown in front of the difference
constexpr std::size_t kAfter = 60;   // and from there on
constexpr std::size_t kContext = 2;  // lines

bool IsShort(const std::string& text) {
  return text.size() <= kShort && text.find('\n') == std::string::npos;
}

std::string Whole(const std::string& text) {
  return text.empty() ? "(empty)" : OneLine(text);
}

std::size_t LineEnd(std::string_view text, std::size_t at) {
  return std::min(text.find('\n', at), text.size());
}

// Where the part of a line that is shown for its column `column` begins.
std::size_t ShownFrom(std::string_view line, std::size_t column) {
  return line.size() <= kBefore + kAfter || column <= kBefore ? 0 : column - kBefore;
}

// That part, made visible.
std::string Around(std::string_view line, std::size_t column) {
  const std::size_t from = ShownFrom(line, column);
  const std::size_t to = line.size() <= kBefore + kAfter ? line.size() : std::min(line.size(), column + kAfter);
  return (from == 0 ? "" : "...") + OneLine(line.substr(from, to - from)) + (to == line.size() ? "" : "...");
}

// How far from the start of `Around` the column stands.
std::size_t MarkAt(std::string_view line, std::size_t column) {
  const std::size_t from = ShownFrom(line, column);
  return (from == 0 ? 0 : 3) + OneLine(line.substr(from, column - from)).size();
}

// The line that starts at `start`, for a - or + line.
std::string Shown(std::string_view text, std::size_t start, std::size_t difference) {
  const std::size_t end = LineEnd(text, start);
  const std::string line = Around(text.substr(start, end - start), difference - start);
  return difference < text.size() ? line : line + (line.empty() ? "" : " ") + "(the text ends here)";
}

std::vector<std::string> Context(std::string_view text, std::size_t start) {
  std::vector<std::string> lines;
  while (start > 0 && lines.size() < kContext) {
    const std::size_t end = start - 1;
    const std::size_t feed = end == 0 ? std::string_view::npos : text.rfind('\n', end - 1);
    start = feed == std::string_view::npos ? 0 : feed + 1;
    lines.push_back("    " + Around(text.substr(start, end - start), 0));
  }
  std::reverse(lines.begin(), lines.end());
  return lines;
}

// Where two texts first differ, and the line of that place, from 1.
struct Place {
  std::size_t at = 0;
  std::size_t line = 0;
};

Place FirstDifference(const std::string& expected, const std::string& found) {
  const auto differing = std::mismatch(expected.begin(), expected.end(), found.begin(), found.end()).first;
  return {static_cast<std::size_t>(differing - expected.begin()),
          static_cast<std::size_t>(std::count(expected.begin(), differing, '\n')) + 1};
}

std::vector<std::string> Explain(const std::string& expected, const std::string& found) {
  if (IsShort(expected) && IsShort(found)) {
    return {"  expected: " + Whole(expected), "  found:    " + Whole(found)};
  }
  const auto [difference, number] = FirstDifference(expected, found);
  const std::size_t feed = difference == 0 ? std::string::npos : expected.rfind('\n', difference - 1);
  const std::size_t start = feed == std::string::npos ? 0 : feed + 1;
  std::vector<std::string> lines = {"  first difference in line " + std::to_string(number) + ", column " +
                                    std::to_string(difference - start + 1) + " (- expected, + found):"};
  for (std::string& line : Context(expected, start)) {
    lines.push_back(std::move(line));
  }
  lines.push_back("  - " + Shown(expected, start, difference));
  lines.push_back("  + " + Shown(found, start, difference));
  const std::string_view line = std::string_view(expected).substr(start, LineEnd(expected, start) - start);
  lines.push_back("    " + std::string(MarkAt(line, difference - start), ' ') + "^");
  return lines;
}

}  // namespace

std::vector<std::string> ExplainDifference(const std::string& expected, const std::string& found, const Mask& maskExpected,
                                           const Mask& maskFound) {
  const std::string shownExpected = maskExpected(expected);
  const std::string shownFound = maskFound(found);
  const std::size_t line = FirstDifference(expected, found).line;
  const std::string where = "  line " + std::to_string(line) + " differs in what is masked";
  if (shownExpected == shownFound) {
    return IsShort(shownExpected) ? std::vector<std::string>{"  expected: " + shownExpected,
                                                             "  found:    " + shownFound + " (differs in what is masked)"}
                                  : std::vector<std::string>{where + ", and nothing else does"};
  }
  std::vector<std::string> lines = Explain(shownExpected, shownFound);
  if (line < FirstDifference(shownExpected, shownFound).line) {
    lines.push_back(where + ", too");
  }
  return lines;
}

}  // namespace devhost

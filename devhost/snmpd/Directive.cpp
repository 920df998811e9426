#include "devhost/snmpd/Directive.h"

#include <algorithm>

#include "devhost/snmpd/WordCutter.h"

namespace devhost {

std::string InLowerCase(std::string_view text) {
  std::string lower(text);
  // Not std::tolower: the daemon compares in its own locale, which knows these letters only.
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lower;
}

std::optional<Directive> ReadDirective(std::string_view line) {
  WordCutter cutter(line);
  if (cutter.AtEnd()) {
    return std::nullopt;
  }
  std::string keyword = cutter.Next().text;
  if (keyword.size() > 1 && keyword.front() == '[' && keyword.back() == ']') {
    if (cutter.AtEnd()) {
      return std::nullopt;
    }
    keyword = cutter.Next().text;
  }
  Directive directive;
  directive.keyword = InLowerCase(keyword);
  directive.restBegin = cutter.At();
  std::size_t end = line.size();
  while (end > directive.restBegin && IsConfigBlank(line[end - 1])) {
    --end;
  }
  directive.rest = line.substr(directive.restBegin, end - directive.restBegin);
  while (!cutter.AtEnd()) {
    directive.words.push_back(cutter.Next());
  }
  return directive;
}

}  // namespace devhost

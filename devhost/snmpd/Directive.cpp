#include "devhost/snmpd/Directive.h"

#include <algorithm>
#include <utility>

#include "devhost/snmpd/WordCutter.h"

namespace devhost {

namespace {

std::string LowerCase(std::string text) {
  // Not std::tolower: the daemon compares in its own locale, which knows these letters only.
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

}  // namespace

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
  directive.keyword = LowerCase(std::move(keyword));
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

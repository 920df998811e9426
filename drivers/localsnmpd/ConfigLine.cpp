#include "drivers/localsnmpd/ConfigLine.h"

#include <cstddef>

namespace drivers {

namespace {

const char kBlanks[] = " \t\v\f\r\n";

bool IsBlank(char character) {
  return std::string_view(kBlanks).find(character) != std::string_view::npos;
}

// A comment counts as the end, as it does for the daemon between words.
void SkipBlanks(std::string_view& rest) {
  const std::size_t first = rest.find_first_not_of(kBlanks);
  rest.remove_prefix(first == std::string_view::npos ? rest.size() : first);
  if (!rest.empty() && rest.front() == '#') {
    rest.remove_prefix(rest.size());
  }
}

std::string InLowerCase(std::string text) {
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    }
  }
  return text;
}

}  // namespace

std::string TakeConfigWord(std::string_view& rest) {
  const char quote = !rest.empty() && (rest.front() == '"' || rest.front() == '\'') ? rest.front() : '\0';
  std::size_t at = quote != '\0' ? 1 : 0;
  std::string word;
  while (at < rest.size() && (quote != '\0' ? rest[at] != quote : !IsBlank(rest[at]))) {
    if (rest[at] == '\\' && at + 1 < rest.size()) {
      ++at;
    }
    word.push_back(rest[at]);
    ++at;
  }
  rest.remove_prefix(at < rest.size() && quote != '\0' ? at + 1 : at);
  SkipBlanks(rest);
  return word;
}

ConfigLine ReadConfigLine(std::string_view line) {
  ConfigLine result;
  result.rest = line;
  SkipBlanks(result.rest);
  std::string word = TakeConfigWord(result.rest);
  if (!word.empty() && word.front() == '[') {
    word = TakeConfigWord(result.rest);
  }
  result.keyword = InLowerCase(word);
  return result;
}

}  // namespace drivers

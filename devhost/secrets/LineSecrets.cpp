#include "devhost/secrets/LineSecrets.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "devhost/secrets/ConfigSecrets.h"
#include "devhost/snmpd/DirectiveNames.h"
#include "devhost/snmpd/WordCutter.h"

namespace devhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr char kDigits[] = "0123456789";

using Learn = std::function<void(std::string_view secret, bool isSure)>;

bool IsOneOf(std::string_view name, std::string_view names) {
  return names.find(" " + std::string(name) + " ") != npos;
}

// How many words in front are not a secret: names of users, hosts and sources.
std::size_t NamesInFront(std::string_view keyword, std::string_view rest) {
  std::vector<DirectiveWord> words;  // a line may be long
  for (WordCutter cutter(rest); !cutter.AtLineEnd() && words.size() != 3;) {
    words.push_back(cutter.Next());
  }
  const std::size_t options = !words.empty() && words[0].text.substr(0, 1) == "-" ? 2 : 0;
  if (IsOneOf(keyword, " com2sec com2sec6 com2secunix ")) {
    return options + 2;
  }
  if (IsOneOf(keyword, " createuser authcommunity smuxpeer ")) {
    return options + 1;
  }
  // An agent writes a target of one blank so that the community comes first.
  const bool isSink = IsOneOf(keyword, " trapsink trap2sink informsink ") && options == 0;
  const bool hasPortOnly = words.size() == 2 && words[1].text.find_first_not_of(kDigits) == npos;
  return isSink && words.size() >= 2 && !hasPortOnly ? 1 : 0;
}

bool IsAlgorithm(std::string_view word) {
  return word == "MD5" || word == "DES" ||
         ((word.substr(0, 3) == "SHA" || word.substr(0, 3) == "AES") && word.find_first_not_of("-0123456789", 3) == npos);
}

// Whether an option takes a secret, of the SNMP programs or of others.
bool TakesSecret(std::string_view option) {
  return option.size() > 1 && option.front() == '-' && std::string_view("cAXpPkK3").find(option[1]) != npos;
}

void LearnOptions(std::string_view rest, const Learn& learn) {
  std::string before;
  for (WordCutter cutter(rest); !cutter.AtLineEnd();) {
    DirectiveWord word = cutter.Next();
    const bool isGlued = TakesSecret(word.text) && word.text.size() > 2;
    if (TakesSecret(before) && (before.size() == 2 || before[1] == '3')) {
      learn(word.text, true);
    } else if (isGlued) {
      learn(std::string_view(word.text).substr(2), true);
    } else if (word.quote != '\0' && word.text.find(' ') != npos) {  // a whole command
      LearnOptions(word.text, learn);
    }
    before = std::move(word.text);
  }
}

// Which of the words are secrets for sure.
enum class Sure { None, First, All };

void LearnWords(std::string_view rest, std::size_t names, bool isOne, Sure sure, const Learn& learn) {
  std::size_t number = 0;
  for (WordCutter cutter(rest); !cutter.AtLineEnd(); ++number) {
    const DirectiveWord word = cutter.Next();
    if (number < names) {
      continue;
    }
    if (number == names && !IsAlgorithm(word.text) && rest.find("-V") == npos) {  // which names a view
      learn(rest.substr(word.begin), false);
    }
    if (!IsAlgorithm(word.text)) {
      const bool isSure = sure == Sure::All || (sure == Sure::First && number == names);
      learn(word.text, isSure);
      learn(rest.substr(word.begin, word.end - word.begin), isSure);
    }
    if (isOne) {
      return;
    }
  }
}

}  // namespace

void LearnSecretsOfLine(std::string_view line, bool continues, const Learn& learn) {
  const std::size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
  const std::string keyword = InLowerCase(NameAt(line.substr(begin)));
  const std::string_view rest = line.substr(begin + keyword.size());
  const KnownName known = FindDirectiveName(keyword);
  if (continues || known.spelling == KnownName::Spelling::Near) {
    LearnWords(line, 0, false, Sure::None, learn);  // what stands in the place of a name may be a secret, too
  } else if (known.spelling != KnownName::Spelling::Exact || (!rest.empty() && !IsConfigBlank(rest.front()))) {
    LearnWords(rest, 0, false, Sure::None, learn);
  } else if (known.follows == Follows::Anything || keyword == "trapsess") {
    LearnOptions(rest, learn);
  } else {
    LearnWords(rest, NamesInFront(keyword, rest), keyword.find("community") != std::string::npos,
               keyword == "createuser" ? Sure::All : Sure::First, learn);
  }
}

}  // namespace devhost

#include "devhost/script/ScriptForm.h"

#include <algorithm>
#include <stdexcept>

#include "devhost/script/ScriptActions.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

bool HasOwnWord(std::string_view place) {
  return !place.empty() && place.front() >= 'a' && place.front() <= 'z';
}

bool IsOneOf(std::string_view word, std::string_view place) {
  for (std::size_t begin = 0; begin <= place.size();) {
    const std::size_t end = std::min(place.find('|', begin), place.size());
    if (place.substr(begin, end - begin) == word) {
      return true;
    }
    begin = end + 1;
  }
  return false;
}

// Refuses the word with that number: the words in front of it have these forms, and it has none of them.
[[noreturn]] void Refuse(const std::vector<const ScriptForm*>& forms, const std::vector<std::string>& words,
                         std::size_t at) {
  std::vector<std::string> places;
  std::string next;
  for (const ScriptForm* const form : forms) {
    const std::string& place = form->Place(at);
    if (!place.empty() && std::find(places.begin(), places.end(), place) == places.end()) {
      next += (places.empty() ? "" : at == 0 ? ", " : "|") + place;
      places.push_back(place);
    }
  }
  if (at == 0) {
    throw std::runtime_error("unknown action; allowed: " + next);
  }
  std::string beginning = forms.front()->Place(0);
  for (std::size_t i = 1; i != at; ++i) {
    beginning += " " + forms.front()->Place(i);
  }
  const std::size_t more = words.size() - at;
  const std::string follows = more == 0      ? "nothing"
                              : next.empty() ? std::to_string(more) + (more == 1 ? " more word" : " more words")
                                             : "another word";
  const ActionForm& action = forms.front()->Action();
  const bool isOne = &forms.back()->Action() == &action;
  const bool takesText = next.empty() && !HasOwnWord(forms.front()->Place(at - 1));
  throw std::runtime_error(Quoted(beginning) + " is followed by " + follows +
                           "; allowed: " + (isOne ? action.synopsis : beginning + " " + next + " ...") +
                           (takesText ? " (a text with blanks stands in quotes)" : ""));
}

}  // namespace

ScriptForm::ScriptForm(std::string_view synopsis, const ActionForm& action) : m_action(action) {
  for (const std::string& word : SplitWords(synopsis)) {
    const bool isOptional = word.front() == '[';
    const std::string text = isOptional ? word.substr(1, word.find(']') - 1) : word;
    if (isOptional && !m_places.empty() && m_places.back().isOptional) {
      m_places.back().text += "|" + text;
      m_places.back().isRepeated = true;
    } else {
      m_places.push_back({text, isOptional, word.back() == '.'});
    }
  }
}

const std::string& ScriptForm::Place(std::size_t number) const {
  static const std::string kNothing;
  return number < m_places.size() ? m_places[number].text : m_places.back().isRepeated ? m_places.back().text : kNothing;
}

std::size_t ScriptForm::Find(std::string_view place) const {
  const auto found =
      std::find_if(m_places.begin(), m_places.end(), [place](const OnePlace& each) { return each.text == place; });
  return found == m_places.end() ? kNone : static_cast<std::size_t>(found - m_places.begin());
}

std::pair<std::size_t, std::size_t> ScriptForm::Fit(const std::vector<std::string>& words) const {
  std::size_t own = 0;
  for (std::size_t i = 0; i != words.size(); ++i) {
    const std::string& place = Place(i);
    if (HasOwnWord(place)) {
      const auto word = words.begin() + static_cast<std::ptrdiff_t>(i);
      const auto first = words.begin() + static_cast<std::ptrdiff_t>(std::min(i, m_places.size() - 1));
      if (!IsOneOf(*word, place) || std::find(first, word, *word) != word) {
        return {i, own};
      }
      ++own;
    } else if (place.empty()) {
      return {i, own};
    }
  }
  return {words.size(), own};
}

const ScriptForm& FindForm(const std::vector<ScriptForm>& forms, const std::vector<std::string>& words) {
  std::pair<std::size_t, std::size_t> best;
  std::vector<const ScriptForm*> left;
  for (const ScriptForm& form : forms) {
    const auto fit = form.Fit(words);
    if (fit > best) {
      best = fit;
      left.clear();
    }
    if (fit == best) {
      left.push_back(&form);
    }
  }
  const bool fits = best.first == words.size();
  const auto found = std::find_if(left.begin(), left.end(),
                                  [&](const ScriptForm* form) { return fits && form->MayEndBefore(words.size()); });
  if (found == left.end()) {
    Refuse(left, words, best.first);
  }
  return **found;
}

}  // namespace devhost

#ifndef DEVHOST_SCRIPT_SCRIPT_FORM_H
#define DEVHOST_SCRIPT_SCRIPT_FORM_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace devhost {

struct ActionForm;

// The form of a line: "flag DEVICE ID true|false". Words in small letters stand for themselves, with "|" one of several;
// words in capitals stand for what a script puts there. What is in brackets may be missing; [..]... may be repeated, and
// words in brackets behind each other may come in any order.
class ScriptForm {
 public:
  // `action` is what a line of this form stands for; it must outlive the form.
  ScriptForm(std::string_view synopsis, const ActionForm& action);

  const ActionForm& Action() const { return m_action; }
  // How the form writes the word with that number, without brackets; "" behind its end.
  const std::string& Place(std::size_t number) const;
  // The number of the word that the form writes so; kNone when it writes none so.
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::size_t Find(std::string_view place) const;
  // Whether a line may have so many words.
  bool MayEndBefore(std::size_t number) const { return number >= m_places.size() || m_places[number].isOptional; }
  // How many words of a line have the form, and how many of these are the form's own.
  std::pair<std::size_t, std::size_t> Fit(const std::vector<std::string>& words) const;

 private:
  struct OnePlace {
    std::string text;
    bool isOptional;
    bool isRepeated;
  };

  const ActionForm& m_action;
  std::vector<OnePlace> m_places;
};

// The form that the words of a line have; there is at least one word. Throws std::runtime_error, which names
// the first word that is wrong and what is allowed there. It quotes no word of the line: each may be part of a secret.
const ScriptForm& FindForm(const std::vector<ScriptForm>& forms, const std::vector<std::string>& words);

}  // namespace devhost

#endif

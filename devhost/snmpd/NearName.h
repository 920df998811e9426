#ifndef DEVHOST_SNMPD_NEAR_NAME_H
#define DEVHOST_SNMPD_NEAR_NAME_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace devhost {

// A word that may be a misspelt name: the one rule for what is near. A letter may be wrong, missing, too many or swapped
// with the next one: two of them, but one in names of four and five letters, and none in shorter ones. A character beyond
// ASCII may stand for any letter that it looks like, and for none.
class NearName {
 public:
  // What is in a name, to see quickly that two are different.
  using Letters = std::uint32_t;  // a set of bits
  static constexpr std::size_t kFar = std::numeric_limits<std::size_t>::max();

  // A shorter word in plain letters is near to no name, since names that short are near to themselves alone.
  static constexpr std::size_t kShortest = 3;

  // In capitals or not. A word of a script that has no letters like those of ASCII is near nothing.
  explicit NearName(std::string_view word);

  static Letters LettersOf(std::string_view name);

  // The word in lower case, each character beyond ASCII as one byte that is in no name.
  const std::string& Text() const { return m_text; }
  // Whether all letters of the name are in the word.
  bool HasLetters(Letters letters) const { return (letters & ~m_letters) == 0; }
  // How many steps make a name, given in lower case, of the word; kFar when it is not near.
  std::size_t DistanceTo(std::string_view name, Letters letters) const;
  std::size_t DistanceTo(std::string_view name) const { return DistanceTo(name, LettersOf(name)); }

 private:
  std::size_t Distance(std::string_view name) const;

  std::string m_text;
  std::size_t m_beyond = 0;  // how many characters are beyond ASCII
  Letters m_letters = 0;
};

}  // namespace devhost

#endif

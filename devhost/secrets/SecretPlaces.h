#ifndef DEVHOST_SECRETS_SECRET_PLACES_H
#define DEVHOST_SECRETS_SECRET_PLACES_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// The bytes that a secret takes in a text, its quotes included.
struct SecretPlace {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// Where secrets stand in one line: behind the directives that hold one, wherever they stand (people keep old lines in
// comments and quote lines in messages), behind the options of the snmp commands, in what a trap receiver tells, and behind
// community=. In the order of the line, none empty, none in another.
std::vector<SecretPlace> SecretPlaces(std::string_view line);
// The same for many lines.
std::vector<SecretPlace> SecretPlacesInText(std::string_view text);
// The same for XML, whole or cut off anywhere.
std::vector<SecretPlace> SecretPlacesInXml(std::string_view xml);

// In order, those that overlap or touch made one.
std::vector<SecretPlace> MergedPlaces(std::vector<SecretPlace> places);

// The text with the mask in the places, which are in order and apart.
std::string Masked(std::string_view text, const std::vector<SecretPlace>& places);

// A part of a word that is a secret: `offset` bytes are none.
struct SecretWord {
  std::size_t index = 0;
  std::size_t offset = 0;
};

// The words behind an snmp command, or behind a directive with the same options, one after the other.
class SecretOptionWalk {
 public:
  // Where in the word a community or passphrase begins; nothing when it holds none.
  std::optional<std::size_t> Step(const std::string& word);

 private:
  int m_values = 0;         // how many words to come are values of the last option
  bool m_isSecret = false;  // the last of them is a secret
};

// Which of the words behind an snmp command, or behind a directive with the same options, hold a community or passphrase.
std::vector<SecretWord> SecretOptions(const std::vector<std::string>& words);

// Whether the word is one of the snmp commands, with or without its folder; the daemons have other options.
bool IsSnmpCommand(std::string_view word);

}  // namespace devhost

#endif

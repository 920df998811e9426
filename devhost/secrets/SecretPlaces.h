#ifndef DEVHOST_SECRETS_SECRET_PLACES_H
#define DEVHOST_SECRETS_SECRET_PLACES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// The bytes of a secret in a text, with its quotes.
struct SecretPlace {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// Returns where secrets stand in one line: behind directives that have one, behind the options of the snmp commands, in the
// output of a trap receiver, and behind community=. A directive may stand anywhere in the line, because people keep old
// lines in comments and quote lines in messages. The places are in order, not empty, and do not overlap.
std::vector<SecretPlace> SecretPlaces(std::string_view line);
// The same for a text of many lines.
std::vector<SecretPlace> SecretPlacesInText(std::string_view text);

// Returns the places in order. Places that overlap or touch become one.
std::vector<SecretPlace> MergedPlaces(std::vector<SecretPlace> places);

// Returns the text with the mask instead of the places, which must be in order and must not overlap.
std::string Masked(std::string_view text, const std::vector<SecretPlace>& places);

}  // namespace devhost

#endif

#ifndef DEVHOST_SECRETS_KNOWN_SECRETS_H
#define DEVHOST_SECRETS_KNOWN_SECRETS_H

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "devhost/secrets/Readings.h"

namespace devhost {

// What a secret is shown as, whatever its length.
inline constexpr char kMask[] = "*****";

// The secrets that have come by, to find them in texts that do not say where they stand: log lines, reasons, what programs
// write.
class KnownSecrets {
 public:
  // Learns a text whole, and what it says without its escapes. A text with bytes that cannot stand in a line or in XML is
  // learnt by its words, too: what follows a line feed becomes a text of its own. Of less than four bytes nothing is learnt,
  // nor of what everybody writes: true, false, default, localhost, numbers with dots.
  void Learn(std::string_view secret);
  // Learns a text of one to three bytes that is a secret for sure. What has a secret's place but may be anything must not be
  // learnt so: every "1" would be hidden.
  void LearnShort(std::string_view secret);
  // Grows with each text that is learnt and was not known.
  std::size_t Count() const { return m_secrets.size() + m_short.size(); }

  // Where a short secret hides: as a whole word, since its letters stand in every text.
  enum class Short { InQuotes, Everywhere };

  // The text with ***** in place of all that is known, also inside words and where an encoding can be undone (Readings.h).
  // After 250,000 secrets no more are learnt, and every text is *****.
  std::string Mask(std::string_view text, Short where = Short::Everywhere) const;

 private:
  void LearnText(std::string_view text);
  void LearnWord(std::string_view word);
  void MarkShort(std::string_view text, Short where, std::vector<bool>& hidden) const;
  void MarkIn(const std::vector<Reading>& readings, std::vector<bool>& hidden) const;
  // How many bytes at the front of `text` are a secret, or the first eight and more of one that was cut off; 0 for none.
  std::size_t LengthAtFront(std::string_view text) const;

  std::set<std::string, std::less<>> m_secrets;
  std::set<std::string, std::less<>> m_short;
  // The first bytes of each: most places of a text begin like none of them.
  std::unordered_set<std::uint32_t> m_starts;
};

}  // namespace devhost

#endif

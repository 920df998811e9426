#ifndef DEVHOST_SECRETS_KNOWN_SECRETS_H
#define DEVHOST_SECRETS_KNOWN_SECRETS_H

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>

namespace devhost {

// What a secret is shown as, whatever its length.
inline constexpr char kMask[] = "*****";

// The secrets that have come by, to find them in texts that do not say where they stand: log lines, reasons, what programs
// write.
class KnownSecrets {
 public:
  // Learns a text whole and each of its words, so that it is found however a message quotes, cuts or encodes it. Of less
  // than four bytes it learns nothing, nor of what everybody writes: true, false, default, localhost, numbers with dots. Nor
  // are the names of directives learnt as parts.
  void Learn(std::string_view secret);

  // Learns a text whole, for texts in which its words would be found too often. One that holds control characters is learnt
  // by its words all the same: what follows them may have become a text of its own.
  void LearnWhole(std::string_view secret);

  // The text with ***** in place of all that is known, also inside words. After 250,000 secrets no more are learnt, and
  // every text is *****.
  std::string Mask(std::string_view text) const;

 private:
  void LearnWord(std::string_view word);
  // How many bytes at the front of `text` are a secret, or the first eight and more of one that was cut off; 0 for none.
  std::size_t LengthAtFront(std::string_view text) const;

  std::set<std::string, std::less<>> m_secrets;
  // The first bytes of each: most places of a text begin like none of them.
  std::unordered_set<std::uint32_t> m_starts;
};

// The text with %XX replaced by the byte of that code, as states write bytes that XML cannot carry.
std::string PercentDecoded(std::string_view text);

}  // namespace devhost

#endif

#ifndef DEVHOST_SECRETS_KNOWN_SECRETS_H
#define DEVHOST_SECRETS_KNOWN_SECRETS_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "devhost/secrets/SecretPlaces.h"

namespace devhost {

// The texts that MaskXml would mask as communities, as they are without the XML around them.
std::vector<std::string> SecretsInXml(std::string_view xml);
// What MaskCommandLine would mask.
std::vector<std::string> SecretsInCommandLine(const std::vector<std::string>& words);

// The secrets that have come by, to find them where nothing around them tells: in log lines, reasons and the output of
// programs.
class KnownSecrets {
 public:
  // Very short texts are not learnt: they are no secrets, and would be found everywhere. One in quotes is learnt without
  // them, too, and each as XML writes it.
  void Learn(std::string_view secret);
  void LearnFromXml(std::string_view xml);
  // From an snmpd.conf. Nothing is learnt from comments, which explain things with ordinary words.
  void LearnFromConfig(std::string_view text);

  // A text of any kind on one or several lines: masks what the functions of Secrets.h find and, as whole words, what is
  // known.
  std::string Mask(std::string_view text) const;
  // Masks what is known only.
  std::string MaskKnown(const std::string& text) const;

 private:
  // As it is, and as XML writes it.
  void AddAsWritten(std::string_view secret);
  // `isCut`: it is the beginning of a longer one.
  void Add(const std::string& secret, bool isCut);
  std::vector<SecretPlace> Places(const std::string& text) const;
  // The end of the longest secret that begins there; `begin` when none does. Where the beginning of a very long one stands,
  // all that follows may be its own.
  std::size_t EndOfSecret(std::string_view text, std::size_t begin) const;

  // Those of very long ones are beginnings, and marked so.
  std::map<std::string, bool, std::less<>> m_secrets;
  std::unordered_set<std::string> m_starts;  // their first bytes: most words of a text begin like none of them
};

}  // namespace devhost

#endif

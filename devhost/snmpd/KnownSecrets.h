#ifndef DEVHOST_SNMPD_KNOWN_SECRETS_H
#define DEVHOST_SNMPD_KNOWN_SECRETS_H

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "devhost/snmpd/SecretPlaces.h"

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
  void Learn(const std::string& secret);
  void LearnFromXml(std::string_view xml);
  // From an snmpd.conf. Nothing is learnt from comments, which explain things with ordinary words.
  void LearnFromConfig(std::string_view text);

  // A text of any kind on one or several lines: masks what the functions of Secrets.h find and, as whole words, what is
  // known.
  std::string Mask(std::string_view text) const;
  // Masks what is known only.
  std::string MaskKnown(const std::string& text) const;

 private:
  void Add(const std::string& secret);
  std::vector<SecretPlace> Places(const std::string& text) const;
  // The end of the longest secret that begins there; `begin` when none does.
  std::size_t EndOfSecret(const std::string& text, std::size_t begin) const;

  std::unordered_set<std::string> m_secrets;
  // How long they are, the longest first, by their first bytes.
  std::unordered_map<std::string, std::set<std::size_t, std::greater<std::size_t>>> m_sizes;
};

}  // namespace devhost

#endif

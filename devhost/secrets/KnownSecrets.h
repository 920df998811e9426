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

// Remembers secrets that have appeared in known places. So it finds them in texts that do not show where secrets stand: log
// lines, reasons of failures, and the output of programs.
class KnownSecrets {
 public:
  // Learns a secret, also as XML writes it and without the quotes around it. Ignores texts of fewer than four bytes: they
  // are not secrets, and would be found everywhere.
  void Learn(std::string_view secret);
  // Learns every secret in known places of the XML, which may be cut off.
  void LearnFromXml(std::string_view xml);
  // Learns every secret of an snmpd.conf. Ignores comments, because they explain things with ordinary words.
  void LearnFromConfig(std::string_view text);

  // Masks a text of any kind, of one or several lines: what the functions of Secrets.h find, and known secrets that stand
  // there as whole words.
  std::string Mask(std::string_view text) const;
  // Masks only known secrets.
  std::string MaskKnown(const std::string& text) const;

 private:
  // Adds a secret as it is, and as XML writes it.
  void AddAsWritten(std::string_view secret);
  // Adds one text. With `isCut`, it is the beginning of a longer secret.
  void Add(const std::string& secret, bool isCut);
  std::vector<SecretPlace> Places(const std::string& text) const;
  // Returns the end of the longest secret that begins at `begin`, or `begin` when none begins there. Behind the beginning of
  // a very long secret, everything may belong to it.
  std::size_t EndOfSecret(std::string_view text, std::size_t begin) const;

  // Each secret, and whether it is only the beginning of a very long one.
  std::map<std::string, bool, std::less<>> m_secrets;
  std::unordered_set<std::string> m_starts;  // the first bytes of all secrets: few words of a text begin with one of them
};

}  // namespace devhost

#endif

#ifndef DEVHOST_SECRETS_MASKER_H
#define DEVHOST_SECRETS_MASKER_H

#include <string>
#include <string_view>
#include <vector>

#include "devhost/secrets/KnownSecrets.h"
#include "devhost/text/Parameters.h"

namespace devhost {

// What the program prints of texts that may hold communities and passphrases: nothing but that they are there, unless the
// user asked to see them.
class Masker {
 public:
  explicit Masker(bool showSecrets) : m_showSecrets(showSecrets) {}

  // Secrets that come by are remembered, to be found in texts that do not tell where they stand.
  void Learn(const Parameters& parameters);
  void LearnFromXml(std::string_view xml);
  void LearnFromConfig(std::string_view text);
  void LearnFromCommandLine(const std::vector<std::string>& words);

  // A text of any kind: a message, a log line, what a program wrote.
  std::string Text(std::string_view text) const;
  // The same, when the whole of it is a secret.
  std::string Secret(const std::string& text) const;
  // XML from or for a driver.
  std::string Xml(const std::string& xml) const;
  // A line of an snmpd.conf.
  std::string ConfigLine(std::string_view line) const;
  // The parameters of a command; a value that begins with @ names a file.
  Parameters CommandParameters(const Parameters& parameters) const;
  // A program's command line, as a script would write it.
  std::string CommandLine(const std::vector<std::string>& words) const;

 private:
  bool m_showSecrets;
  KnownSecrets m_known;
};

// Learns a secret as it is, and as messages quote it: on one line, and cut.
void LearnQuoted(KnownSecrets& secrets, std::string_view secret);

// Whether the setting of that name is a community.
bool IsSecretSetting(std::string_view name);

}  // namespace devhost

#endif

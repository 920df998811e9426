#ifndef DEVHOST_SECRETS_MASKER_H
#define DEVHOST_SECRETS_MASKER_H

#include <string>
#include <string_view>
#include <vector>

#include "devhost/secrets/KnownSecrets.h"
#include "devhost/text/Parameters.h"

namespace devhost {

// Masks communities and passphrases in the texts that the program prints, unless the user has asked to see them.
class Masker {
 public:
  // With `showSecrets`, nothing is masked.
  explicit Masker(bool showSecrets) : m_showSecrets(showSecrets) {}

  // These remember the secrets in known places, to find them later in other texts.
  // The parameters of a command: communities, the value of a community setting, and secrets in XML.
  void Learn(const Parameters& parameters);
  // XML from or for a driver.
  void LearnFromXml(std::string_view xml);
  // A whole snmpd.conf.
  void LearnFromConfig(std::string_view text);
  // The words of a program's command line.
  void LearnFromCommandLine(const std::vector<std::string>& words);

  // These return a text with its secrets masked.
  // A text of any kind: a message, a log line, the output of a program.
  std::string Text(std::string_view text) const;
  // A text that is a secret as a whole. An empty one stays empty.
  std::string Secret(const std::string& text) const;
  // XML from or for a driver. The text of <Fail> is a message, so known secrets are masked in it, too.
  std::string Xml(const std::string& xml) const;
  // An snmpd.conf.
  std::string ConfigText(std::string_view text) const;
  // The parameters of a command or event.
  Parameters CommandParameters(const Parameters& parameters) const;
  // A program's command line, as a script would write it.
  std::string CommandLine(const std::vector<std::string>& words) const;

 private:
  bool m_showSecrets;
  KnownSecrets m_known;
};

// Learns a secret as it is, and as messages quote it: on one line, and cut when it is long.
void LearnQuoted(KnownSecrets& secrets, std::string_view secret);

// Returns whether the setting `name` is a community.
bool IsSecretSetting(std::string_view name);

}  // namespace devhost

#endif

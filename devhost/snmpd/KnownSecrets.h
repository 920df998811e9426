#ifndef DEVHOST_SNMPD_KNOWN_SECRETS_H
#define DEVHOST_SNMPD_KNOWN_SECRETS_H

#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// The texts that MaskXml would mask as communities, as they are without the XML around them.
std::vector<std::string> SecretsInXml(std::string_view xml);
// The words, or parts of them, that MaskCommandLine would mask behind an option.
std::vector<std::string> SecretsInCommandLine(const std::vector<std::string>& words);

// The secrets that have come by, to find them where nothing around them tells: in log lines, reasons and the output of
// programs.
class KnownSecrets {
 public:
  // Very short texts are not learnt: they are no secrets, and would be found everywhere. Nor are more than fit a project.
  void Learn(const std::string& secret);
  void LearnFromXml(std::string_view xml);

  // A text of any kind on one or several lines: masks what the functions of Secrets.h find and, as whole words, what is
  // known.
  std::string Mask(std::string_view text) const;

 private:
  std::vector<std::string> m_secrets;  // the longest first
};

}  // namespace devhost

#endif

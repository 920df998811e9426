#ifndef DEVHOST_SECRETS_SECRETS_H
#define DEVHOST_SECRETS_SECRETS_H

#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// Communities and passphrases are passwords. Everything that the programs print passes through one of these functions first,
// unless the user has asked to see secrets. A secret of any length is shown as *****. An empty one stays empty, so that
// readers see that it is missing.
inline constexpr char kMask[] = "*****";

// Masks the secrets in one line of an snmpd.conf, given without its line feed. They are masked in comments, too, where
// people keep old lines. When the line cannot be cut into words for sure, it is masked to its end.
std::string MaskConfigLine(std::string_view line);

// Masks the secrets in a whole snmpd.conf.
std::string MaskConfigText(std::string_view text);

// Masks the secrets in XML, complete or cut off anywhere: in elements and attributes that are communities (a setting named
// communityRead or communityWrite, community="..."), and in an snmpd.conf that stands in a text or an attribute.
std::string MaskXml(std::string_view xml);

// Masks the secrets in the words of a program's command line: the communities and passphrases behind options.
std::vector<std::string> MaskCommandLine(const std::vector<std::string>& words);

// Returns the secrets that MaskCommandLine would mask.
std::vector<std::string> SecretsInCommandLine(const std::vector<std::string>& words);

}  // namespace devhost

#endif

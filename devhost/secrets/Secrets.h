#ifndef DEVHOST_SECRETS_SECRETS_H
#define DEVHOST_SECRETS_SECRETS_H

#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// Communities and passphrases are passwords. Whatever the programs print goes through one of these first, unless the user
// asked to see them. A secret is shown as ***** whatever its length; an empty one stays empty, because that there is none is
// worth seeing.
inline constexpr char kMask[] = "*****";

// One line of an snmpd.conf, without its line feed; also in a comment, where people keep old lines. What cannot be cut into
// words for sure is masked to the end of the line.
std::string MaskConfigLine(std::string_view line);

// A whole snmpd.conf.
std::string MaskConfigText(std::string_view text);

// XML, whole or cut off anywhere: the text of the elements that hold communities, the attributes that do (a setting named
// communityRead or communityWrite, community="..."), and a whole snmpd.conf that stands in an element's text.
std::string MaskXml(std::string_view xml);

// The words of a program's command line, as scripts run it: the community or passphrase behind its option.
std::vector<std::string> MaskCommandLine(const std::vector<std::string>& words);

}  // namespace devhost

#endif

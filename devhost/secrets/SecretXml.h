#ifndef DEVHOST_SECRETS_SECRET_XML_H
#define DEVHOST_SECRETS_SECRET_XML_H

#include <string>
#include <string_view>
#include <vector>

#include "devhost/secrets/SecretPlaces.h"

namespace devhost {

// Returns where secrets stand in XML, complete or cut off anywhere. The places are in order, not empty, and do not overlap.
std::vector<SecretPlace> SecretPlacesInXml(std::string_view xml);

// Returns the secrets that MaskXml would mask, without the escapes of XML. Leaves out those in comments of an snmpd.conf.
std::vector<std::string> SecretsInXml(std::string_view xml);

}  // namespace devhost

#endif

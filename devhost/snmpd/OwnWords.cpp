#include "devhost/snmpd/OwnWords.h"

#include <algorithm>
#include <cstddef>

namespace devhost {

namespace {

// Where nothing follows, or what it quotes. Others than these are hidden.
constexpr std::string_view kPhrases[] = {
    "Address already in use",
    "Address family for hostname not supported",
    "Already have an entry for this process.",
    "Ambiguous token",
    "Bad SPEED value",
    "Bad TYPE",
    "Bad integer value",
    "Blank line following",
    "Can't identify group",
    "Can't identify user",
    "Can't open include dir",
    "Cannot find module",
    "Default target already registered for this application-domain combination",
    "Default transport already registered for this application",
    "Error converting parameter",
    "Error generating a key (Ku) from the supplied authentication pass phrase.",
    "Error opening specified endpoint",
    "Failed to register extend entry",
    "Group not found in group database",
    "Illegal configuration line: missing fields",
    "Illegal frequency specified",
    "Illegal view name",
    "Included config",
    "Included file",
    "Invalid timeout value",
    "Missing SPEED parameter",
    "Missing TYPE parameter",
    "Name or service not known",
    "No domain and target in registration of defTarget",
    "No domain(s) in registration of defDomain",
    "No proc entry registered for this proc name yet.",
    "No target in registration of defTarget",
    "Server Exiting with code",
    "Should be yes|no|true|false|0|1",
    "TYPE must be included/excluded?",
    "The separate port argument for sinks is deprecated",
    "Trailing junk found",
    "Unknown security level",
    "Unknown table trying to add a row",
    "Unknown token",
    "Unknown/disabled version",
    "Unsupported enginedIDType, forcing IPv4",
    "User not found in passwd database",
    "Warning: no access control information configured.",
    "You must specify a default user name using the agentSecName token",
    "authtrapenable must be 1 or 2",
    "bad SUBTREE object id",
    "bad security level (noauthnopriv, authnopriv, authpriv)",
    "bad security model, should be: v1, v2c or usm or a registered security plugin name",
    "can't instatiate table since I can't parse the table name",
    "can't instatiate table since it doesn't appear to be a proper table (no children)",
    "cannot create sink",
    "cannot resolve IPv4 source hostname",
    "cannot resolve IPv6 source hostname",
    "community name too long",
    "context name too long",
    "could not open file",
    "could not parse priority",
    "couldn't open file",
    "diskio path does not exist.",
    "duplicate table data attempted to be entered. row exists",
    "failed to parse proxy args",
    "ignore extra tokens on line",
    "ignoring",
    "ignoring extra tokens on line",
    "ignoring unknown argument",
    "illegal oid",
    "illegal proxy oid specified",
    "includeAllDisks already specified.",
    "incomplete line",
    "invalid cache time",
    "invalid index number",
    "line too long",
    "missing COMMUNITY parameter",
    "missing CONTEXT parameter",
    "missing LEVEL parameter",
    "missing MODEL parameter",
    "missing NAME parameter",
    "missing PREFIX parameter",
    "missing SECURITY parameter",
    "missing SOCKPATH parameter",
    "missing SOURCE parameter",
    "missing SUBTREE parameter",
    "missing TYPE parameter",
    "missing VIEW parameter",
    "missing base oid",
    "must specify map type",
    "no oid specified",
    "no variable value specified",
    "passphrase chosen is below the length requirements of the USM",
    "second token is not a OID",
    "security name too long",
    "snmpd: failed to parse this line.",
    "storageUseNFS must be 1 or 2",
    "syntax error: missing set value",
    "syntax error: no event name",
    "syscontact token too long (must be < 256)",
    "sysdescr token too long (must be < 256)",
    "syslocation token too long (must be < 256)",
    "sysname token too long (must be < 256)",
    "sysobjectid token not a parsable OID",
    "unknown notification OID",
    "unknown option for pass directive",
    "unknown set OID",
    "unknown source filter type",
    "unrecognised option"};

}  // namespace

std::string OwnWords(std::string_view said) {
  said.remove_prefix(std::min(said.find_first_not_of(" \t"), said.size()));
  std::string_view own;
  for (const std::string_view phrase : kPhrases) {
    if (phrase.size() > own.size() && said.substr(0, phrase.size()) == phrase) {
      own = phrase;
    }
  }
  const std::string_view rest = said.substr(own.size());
  if (!own.empty() && rest.find_first_not_of(".: ") == std::string_view::npos) {
    return std::string(said);
  }
  const bool hasColon = !own.empty() && rest.front() == ':';
  return std::string(own) + (own.empty() ? "" : hasColon ? ": " : " ") + kNoOwnWords;
}

}  // namespace devhost

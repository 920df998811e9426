#ifndef DEVHOST_SNMPD_OWN_WORDS_H
#define DEVHOST_SNMPD_OWN_WORDS_H

#include <string>
#include <string_view>

namespace devhost {

// What OwnWords gives when it knows none of the words.
inline constexpr char kNoOwnWords[] = "*****";

// What the daemon says in words of its own, then ***** for what it may have quoted from a configuration file, where secrets
// stand: "cannot create sink: *****". Only phrases that are known to be its own are shown.
std::string OwnWords(std::string_view said);

}  // namespace devhost

#endif

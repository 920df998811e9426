#ifndef DEVHOST_CHECK_ACCESS_LINE_H
#define DEVHOST_CHECK_ACCESS_LINE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devhost/snmpd/Directive.h"

namespace devhost {

// What a line says about who may do what, as the daemon understands it.
struct AccessLine {
  enum class Kind {
    Community,  // a community, with its view and its rights
    User,       // the same for a user
    Name,       // com2sec: the name that the daemon gives to whoever knows a community
    Member,     // group: a name in a group
    Rights,     // access and its kin: what a group may do
    View        // what can be seen
  };
  Kind kind = Kind::Community;
  std::string problem;             // why the daemon rejects the line, in words that quote nothing; "" when it does not
  bool isTakenAnyway = false;      // the daemon complains of the problem, and does what the line says
  bool hasHostName = false;        // a source that a name server is asked about
  bool hasObjectName = false;      // a subtree by a name, which only MIB files give
  std::vector<std::string> views;  // the views that the line uses
  std::string name;                // of the security name, of the member, or of the view
  std::string group;
  bool isOfCommunities = false;  // a member that com2sec has to name: its model is v1 or v2c
};

// Whether lines with this keyword, in lower case, are about access.
bool IsAccess(std::string_view keyword);

// Reads a line about access; nothing for lines about other things, and for those whose first word is missing or empty.
std::optional<AccessLine> ReadAccess(const Directive& setting);

}  // namespace devhost

#endif

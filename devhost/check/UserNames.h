#ifndef DEVHOST_CHECK_USER_NAMES_H
#define DEVHOST_CHECK_USER_NAMES_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "devhost/snmpd/Directive.h"

namespace devhost {

// The users that the lines of one file make, and those that its lines let in. A user may also come from the daemon's
// persistent folder, so a name that no line makes is nothing to complain of by itself.
class UserNames {
 public:
  enum class Mismatch {
    Again,     // the line makes a user that a line above it makes, too
    Case,      // the line lets in a name that differs from a user's in capitals only
    NoPrivacy  // the line demands encryption of a user who has no key for it
  };
  struct Found {
    std::size_t line = 0;
    Mismatch what = Mismatch::Again;
  };

  // Takes createUser, rouser and rwuser; other lines, and those that the daemon rejects, say nothing.
  void Add(const Directive& setting, std::size_t line);
  // What does not fit together, once all lines are known.
  std::vector<Found> Mismatches() const;

 private:
  struct Use {
    std::size_t line = 0;
    std::string name;
    bool needsPrivacy = false;
  };

  struct User {
    bool hasPrivacy;   // a key for encryption
    std::string line;  // that made it, behind the directive
  };

  std::map<std::string, User> m_users;
  std::vector<Use> m_uses;
  std::vector<Found> m_again;
};

}  // namespace devhost

#endif

#ifndef DEVHOST_CHECK_ACCESS_NAMES_H
#define DEVHOST_CHECK_ACCESS_NAMES_H

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "devhost/check/AccessLine.h"

namespace devhost {

// The names of views, groups and communities in the lines of one file, and of those that it includes. The daemon follows
// them once it has read all lines, so their order does not matter.
class AccessNames {
 public:
  struct Use {
    std::size_t line = 0;
    std::string name;
  };

  // Beyond this many lines nothing is known for sure, and nothing is said.
  static constexpr std::size_t kMostLines = 100000;

  // Takes what the daemon takes.
  void Add(const AccessLine& access, std::size_t line);

  // The lines that use a view, a group or a security name that no line defines.
  std::vector<Use> MissingViews() const;
  std::vector<Use> MissingGroups() const;
  std::vector<Use> MissingNames() const;
  // The lines of names and users that belong to no group which may do anything.
  std::vector<Use> Powerless() const;
  // Whether anybody belongs to a group that may do something.
  bool LetSomebodyIn() const;

 private:
  struct Member {
    std::size_t line = 0;
    std::string name;
    std::string group;
    bool isOfCommunities = false;
  };
  using Names = std::unordered_set<std::string>;

  bool IsLetIn(const Member& member) const;

  std::size_t m_lines = 0;
  Names m_views = {"_all_", "_none_", "none", ""};  // the daemon's own, and the usual word for none at all
  Names m_names;
  Names m_groups;  // with members
  Names m_rights;  // groups that may do something
  std::vector<Use> m_usedViews;
  std::vector<Use> m_usedGroups;
  std::vector<Use> m_definedNames;
  std::vector<Member> m_members;
};

}  // namespace devhost

#endif

#include "tests/drivers/support/AccessList.h"

#include <sys/xattr.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <stdexcept>

namespace {

const char kOfFile[] = "system.posix_acl_access";
const char kForNewFiles[] = "system.posix_acl_default";
const std::uint32_t kNobodysId = 0xffffffff;
const std::uint32_t kSomeGroup = 12345;

// As the system has it.
struct Entry {
  std::uint16_t tag;
  std::uint16_t rights;
  std::uint32_t id;
};
struct List {
  std::uint32_t version;
  std::array<Entry, 5> entries;
};

}  // namespace

bool GiveAccessList(const std::string& path, AccessList kind) {
  // Owner, owning group, a group by its number, the most for the last two, everybody else.
  const List list = {
      2, {{{1, 7, kNobodysId}, {4, 0, kNobodysId}, {8, 7, kSomeGroup}, {0x10, 7, kNobodysId}, {0x20, 0, kNobodysId}}}};
  const char* const name = kind == AccessList::OfFile ? kOfFile : kForNewFiles;
  if (::setxattr(path.c_str(), name, &list, sizeof list, 0) == 0) {
    return true;
  }
  if (errno != EOPNOTSUPP) {
    throw std::runtime_error("no access list for " + path);
  }
  return false;
}

bool HasAccessList(const std::string& path) {
  return ::getxattr(path.c_str(), kOfFile, nullptr, 0) > 0;
}

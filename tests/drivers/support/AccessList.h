#ifndef TESTS_DRIVERS_SUPPORT_ACCESS_LIST_H
#define TESTS_DRIVERS_SUPPORT_ACCESS_LIST_H

#include <string>

// Access lists (POSIX ACLs) in which a group of its own has all rights, and the file's group has none.
enum class AccessList {
  OfFile,      // its own
  ForNewFiles  // that of a folder for what is made in it
};

// False where the file system has no access lists.
bool GiveAccessList(const std::string& path, AccessList kind);
// Whether it has a list of its own.
bool HasAccessList(const std::string& path);

#endif

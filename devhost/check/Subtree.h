#ifndef DEVHOST_CHECK_SUBTREE_H
#define DEVHOST_CHECK_SUBTREE_H

#include <string_view>

namespace devhost {

// A part of the tree of objects, as a line gives it.
enum class Subtree {
  Good,
  Named,  // by the name of an object, which the daemon knows only from a MIB file
  Wrong   // the daemon rejects it, whatever MIB files it has
};

Subtree JudgeSubtree(std::string_view text);

}  // namespace devhost

#endif

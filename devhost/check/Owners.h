#ifndef DEVHOST_CHECK_OWNERS_H
#define DEVHOST_CHECK_OWNERS_H

#include <cstddef>
#include <string>
#include <vector>

namespace devhost {

// Who has written lines, and what the next write of the agent does with them.
enum class Owner {
  Section,     // the agent; each write makes it anew
  AboveIt,     // somebody, where the next write drops it: above the section, or above an end marker that is out of place
  BehindIt,    // somebody, where the next write drops it, too: behind the trailer, down to the first empty line
  OldSection,  // a section that the agent does not replace
  Kept,        // somebody, where the agent leaves it alone
  Included     // somebody, in a file that the daemon reads there; the agent does not know of it
};

// Lines of one file that follow one another, with the same owner.
struct OwnedLines {
  std::size_t first = 0;
  std::size_t last = 0;
  Owner owner = Owner::Kept;
  std::string file = {};        // of included lines; else ""
  std::string includedBy = {};  // of included lines: "line 12", or "FILE:3" in an included file
};

// All lines of a text in the order in which the daemon reads them, with those of included files. `path` is where the
// text is, absolute; with "", nobody knows, and included files are left out.
std::vector<OwnedLines> OwnersOf(const std::string& text, const std::string& path);

}  // namespace devhost

#endif

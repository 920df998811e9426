#ifndef DEVHOST_OPERATIONS_READ_LINES_H
#define DEVHOST_OPERATIONS_READ_LINES_H

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/snmpd/Directive.h"
#include "devhost/system/FileText.h"

namespace devhost {

// A line that the daemon takes for a directive of its own.
struct ReadLine {
  std::size_t number = 0;  // in its file
  bool isIncluded = false;
  bool isInSection = false;  // of the agent
  std::string place;         // how people find it: "line 12", or "FILE:3" in an included file
  Directive setting;
  // Of a line that gives something to a community: the family of addresses, and the text that the daemon answers to; or "".
  std::string community;
};

// The directives of a file, and of the files that it includes, in the order in which the daemon reads them. `path` says
// where the file is, absolute; with "", nobody knows, and included files are left out. So are files that cannot be read, as
// the daemon does.
std::vector<ReadLine> ReadLinesOf(const std::string& text, const std::string& path);

// Those of them that are outside the agent's sections and give something to the community, of either family. None for "".
std::vector<ReadLine> LinesOfCommunity(const std::string& text, const std::string& path, const std::string& community);

}  // namespace devhost

#endif

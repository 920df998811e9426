#ifndef DEVHOST_CHECK_INCLUDES_H
#define DEVHOST_CHECK_INCLUDES_H

#include <string>
#include <string_view>
#include <vector>

#include "devhost/check/ConfigText.h"
#include "devhost/snmpd/IncludedFiles.h"

namespace devhost {

// Whether the daemon reads other files for a directive with this keyword, in lower case.
bool IsInclude(std::string_view keyword);

// The directive of a line that makes the daemon read other files, or null. Behind the name of a section, the daemon does not
// know it.
const Directive* FindInclude(const ConfigLine& line);

// Finds the files that one configuration includes, as the daemon does.
class Includes {
 public:
  struct Found {
    std::vector<IncludedFiles::File> files;  // in the daemon's order; those of a folder by their names
    std::string problem;                     // what is not read, in words that quote nothing; "" when all is
    std::string remedy;
  };

  // Reads what the line includes. `path` is the file that the line stands in, `depth` how many files have led to it.
  Found Follow(const ConfigLine& line, const std::string& path, int depth);

 private:
  void Search(const std::string& name, Found& found);

  IncludedFiles m_files{IncludedFiles::Links::Followed};
};

}  // namespace devhost

#endif

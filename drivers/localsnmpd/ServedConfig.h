#ifndef DRIVERS_LOCALSNMPD_SERVED_CONFIG_H
#define DRIVERS_LOCALSNMPD_SERVED_CONFIG_H

#include <cstddef>
#include <string>
#include <vector>

namespace drivers {

// What the daemon reads in place of snmpd.conf. It holds comments and the directives of ServedDirectives.h, nothing else,
// and names no other file: the included ones are part of it.
//
// includeFile and includeDir are resolved here, with absolute paths and regular files only. Lines of other sections than
// snmpd, other includes and all other directives become comments.
struct ServedConfig {
  // Where a line stands: in snmpd.conf, or in an included file with that path.
  struct Place {
    std::string file;
    std::size_t line = 0;  // from 1
  };
  // A line that the daemon does not get, or not as it stands.
  struct Note {
    Place place;
    std::string line;  // as it stands there
    std::string what;  // in words, without anything from the line but known directives
  };
  std::string text;
  std::vector<Place> places;  // of each line of the text
  std::vector<Note> notes;
};

// Makes the served text of snmpd.conf from `text`, and reads the files that it includes: at most 100, to a depth of 8, with
// 16 MiB in all. Never fails: what cannot be served is left out, with a note.
ServedConfig MakeServedConfig(const std::string& text);

}  // namespace drivers

#endif

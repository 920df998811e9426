#ifndef DRIVERS_LOCALSNMPD_CONFIG_LINE_H
#define DRIVERS_LOCALSNMPD_CONFIG_LINE_H

#include <string>
#include <string_view>

namespace drivers {

// One line of an snmpd.conf, cut as the daemon cuts it. A keyword may be in quotes and hold backslashes, which count for
// nothing; the name of a section in brackets may stand in front of it.
struct ConfigLine {
  std::string keyword;    // in lower case; empty for a comment, an empty line, a section's name alone
  std::string_view rest;  // what follows it, without the blanks in front; a view into the line
};

ConfigLine ReadConfigLine(std::string_view line);

// Cuts the next word off `rest`, quotes taken away and blanks behind it skipped.
std::string TakeConfigWord(std::string_view& rest);

}  // namespace drivers

#endif

#ifndef CONFIG_SECTION_MERGE_H
#define CONFIG_SECTION_MERGE_H

#include <string>

namespace managed_section {

// Returns the new text of a file: `section`, then what is kept of `oldText`.
//
// Without a complete section in `oldText` (a start marker alone does not make one), all of it is kept, below one more line
// feed. With one, these are replaced: everything up to the first line with the end marker, even text above the old section;
// the comment lines below that line; and the first line below them. In a file that the agent has written, that last line is
// the blank line after the trailer.
std::string Merge(std::string section, const std::string& oldText);

}  // namespace managed_section

#endif

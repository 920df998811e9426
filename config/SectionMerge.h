#ifndef CONFIG_SECTION_MERGE_H
#define CONFIG_SECTION_MERGE_H

#include <string>

namespace managed_section {

// The new text of a file: `section`, then what is kept of `oldText`.
//
// Without a complete section in `oldText` (a start marker alone does not make one) all of it is kept, below one more line
// feed. With one, everything up to and including the first line that holds the end marker is replaced, text above the old
// section included; so are the comment lines after it and the first line that is none: the blank line after the trailer, in
// a file that the agent has written.
std::string Merge(std::string section, const std::string& oldText);

}  // namespace managed_section

#endif

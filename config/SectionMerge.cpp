#include "config/SectionMerge.h"

#include <cstddef>

#include "config/ManagedSection.h"

namespace managed_section {
namespace {

// Returns where the text begins that is kept below a new section. `endMarker` is the position of the old end marker.
//
// The first line below the marker's line that is not a comment is dropped, and the kept text begins at the line feed that
// ends it. In a file that the agent wrote, this is the blank line below the trailer. A setting directly below the trailer is
// lost in this way; the format has always behaved so.
std::size_t KeptFrom(const std::string& text, std::size_t endMarker) {
  std::size_t lineEnd = text.find('\n', endMarker);
  while (lineEnd != std::string::npos) {
    const std::size_t line = lineEnd + 1;
    lineEnd = text.find('\n', line);
    const bool comment = line < text.size() && text[line] == '#';
    if (!comment) {
      break;
    }
  }
  return lineEnd == std::string::npos ? text.size() : lineEnd;
}

}  // namespace

std::string Merge(std::string section, const std::string& oldText) {
  const bool started = oldText.find(kStartMarker) != std::string::npos;
  const std::size_t endMarker = started ? oldText.find(kEndMarker) : std::string::npos;
  if (endMarker == std::string::npos) {
    section.reserve(section.size() + 1 + oldText.size());
    section.append("\n").append(oldText);
  } else {
    section.append(oldText, KeptFrom(oldText, endMarker), std::string::npos);
  }
  return section;
}

}  // namespace managed_section
